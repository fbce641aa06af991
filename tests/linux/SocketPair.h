#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <span>
#include <vector>

#include "linux/process/Descriptor.h"

namespace Linux {

/// Two sockets that keep frames apart, as packet sockets do, and need no privileges.
struct SocketPair {
  SocketPair() {
    std::array<int, 2> ends;
    int const type = SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC;
    EXPECT_EQ(socketpair(AF_UNIX, type, 0, ends.data()), 0);
    near = Descriptor(ends[0]);
    far = Descriptor(ends[1]);
  }
  void put(std::vector<uint8_t> const& frame) {
    // A frame that the filter of the other end drops is told as an error here.
    send(far.fd(), frame.data(), frame.size(), MSG_NOSIGNAL);
  }
  std::vector<uint8_t> take() {
    std::vector<uint8_t> frame(2048);
    ssize_t const got = recv(far.fd(), frame.data(), frame.size(), 0);
    frame.resize(got < 0 ? 0 : static_cast<size_t>(got));
    return frame;
  }
  Descriptor near;
  Descriptor far;
};

/// The beginning of an MKPDU, filled up.
inline std::vector<uint8_t> mkaFrame(size_t size) {
  std::vector<uint8_t> frame = {1, 0x80, 0xc2, 0, 0, 3, 2, 0, 0, 0, 0, 1, 0x88, 0x8e, 3, 5};
  frame.resize(size, 0xaa);
  return frame;
}

}  // namespace Linux
