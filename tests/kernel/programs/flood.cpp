// Sends frames over and over, in turn, so many a second:
//
//   flood SPACE DEVICE RATE SECONDS < FRAMES
//
// A frame is a line of hexadecimal digits. One JSON object tells how many were sent in which time.
#include <cstdio>
#include <iostream>
#include <vector>

#include "linux/process/ProcessWorld.h"
#include "runtime/World.h"
#include "tests/kernel/Wire.h"

namespace Kernel {
namespace {

constexpr size_t kBatch = 64;

using Frame = std::vector<unsigned char>;

std::vector<Frame> readFrames() {
  std::vector<Frame> frames;
  for (std::string line; std::getline(std::cin, line);) {
    Frame frame;
    for (size_t at = 0; at + 1 < line.size(); at += 2) {
      frame.push_back(static_cast<unsigned char>(std::stoi(line.substr(at, 2), nullptr, 16)));
    }
    frames.push_back(frame);
  }
  return frames;
}

Linux::Descriptor openOn(char const* space, char const* device) {
  Inside const inside(space);
  Linux::Descriptor socket(::socket(AF_PACKET, SOCK_RAW, 0));
  sockaddr_ll address{};
  address.sll_family = AF_PACKET;
  address.sll_ifindex = static_cast<int>(if_nametoindex(device));
  int const on = 1;
  setsockopt(socket.fd(), SOL_PACKET, PACKET_QDISC_BYPASS, &on, sizeof on);
  if (bind(socket.fd(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    throw std::system_error(errno, std::generic_category(), device);
  }
  return socket;
}

size_t sendBatch(int socket, std::vector<Frame>& frames, size_t first) {
  mmsghdr messages[kBatch] = {};
  iovec parts[kBatch];
  for (size_t i = 0; i < kBatch; ++i) {
    Frame& frame = frames[(first + i) % frames.size()];
    parts[i] = {frame.data(), frame.size()};
    messages[i].msg_hdr.msg_iov = &parts[i];
    messages[i].msg_hdr.msg_iovlen = 1;
  }
  int const sent = sendmmsg(socket, messages, kBatch, 0);
  return sent > 0 ? static_cast<size_t>(sent) : 0;
}

void flood(int socket, std::vector<Frame> frames, double rate, double seconds) {
  double const start = Vesk::now();
  size_t sent = 0;
  while (Vesk::now() < start + seconds) {
    if (static_cast<double>(sent) < (Vesk::now() - start) * rate) {
      sent += sendBatch(socket, frames, sent);
    } else {
      poll(nullptr, 0, 1);
    }
  }
  std::printf("{\"sent\": %zu, \"seconds\": %.2f}\n", sent, Vesk::now() - start);
}

}  // namespace
}  // namespace Kernel

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  Linux::ProcessWorld world{[](Vesk::LogMessage const&) {}};
  Vesk::WorldScope const scope(world);
  try {
    auto const socket = Kernel::openOn(argv[1], argv[2]);
    Kernel::flood(socket.fd(), Kernel::readFrames(), std::atof(argv[3]), std::atof(argv[4]));
  } catch (std::exception const& error) {
    std::fprintf(stderr, "flood: %s\n", error.what());
    return 1;
  }
}
