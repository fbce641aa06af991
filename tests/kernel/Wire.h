#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

#include "linux/process/Descriptor.h"

namespace Kernel {

/// Runs a command of the machine; throws if it fails.
inline void run(std::string const& command) {
  if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

/// Waits until a device is in this state, which the kernel may take a second to say.
inline void becomes(std::string const& space, std::string const& device, char const* state) {
  run("for i in $(seq 30); do ip -n " + space + " link show " + device + " | grep -q 'state " +
      state + "' && exit 0; sleep 0.1; done; exit 1");
}

/// Two network namespaces, a and b, with a cable between va (02:00:00:00:00:0a) and vb (...:0b).
inline void cableIs() {
  run("ip netns add a && ip netns add b");
  // Without frames of the kernel's own.
  run("for space in a b; do ip netns exec $space sh -c "
      "'echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6' 2>/dev/null; done; true");
  run("ip link add va address 02:00:00:00:00:0a netns a type veth peer name vb"
      " address 02:00:00:00:00:0b netns b");
  run("ip -n a link set va up && ip -n b link set vb up");
  becomes("a", "va", "UP");
  becomes("b", "vb", "UP");
}

inline void cableDel() { run("ip -n a link del va && ip netns del a && ip netns del b"); }

/// A network namespace that `ip netns` knows; this thread is inside while one of these lives.
class Inside {
 public:
  explicit Inside(std::string const& name)
      : former_(open("/proc/self/ns/net", O_RDONLY)),
        inner_(open(("/run/netns/" + name).c_str(), O_RDONLY)) {
    if (setns(inner_.fd(), CLONE_NEWNET) != 0) {
      throw std::system_error(errno, std::generic_category(), name);
    }
  }
  ~Inside() { setns(former_.fd(), CLONE_NEWNET); }

 private:
  Linux::Descriptor former_, inner_;
};

/// Sends and receives frames of one EtherType on one device.
class FrameSocket {
 public:
  static constexpr uint16_t kType = 0x88b5;  // for experiments

  /// The device's address is 02:00:00:00:00:`last`.
  FrameSocket(std::string const& space, std::string const& device, uint8_t last,
              uint16_t type = kType)
      : last_(last), type_(type) {
    Inside const inside(space);
    socket_ = Linux::Descriptor(socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK, htons(type)));
    address_.sll_family = AF_PACKET;
    address_.sll_protocol = htons(type);
    address_.sll_ifindex = static_cast<int>(if_nametoindex(device.c_str()));
    if (bind(socket_.fd(), reinterpret_cast<sockaddr*>(&address_), sizeof address_) != 0) {
      throw std::system_error(errno, std::generic_category(), device);
    }
  }
  /// A broadcast frame; whether the device took it.
  bool sendFrame() const { return sendWith({type_}); }
  /// The same in a VLAN.
  bool sendInVlan(uint16_t vlan) const { return sendWith({0x8100, vlan, type_}); }
  /// How many of so many frames of others come, before nothing comes for a while: the kernel may
  /// decrypt them later than they arrive.
  size_t received(size_t expected) const {
    constexpr int kWhile = 300;  // ms
    size_t count = 0;
    for (pollfd ready{socket_.fd(), POLLIN, 0}; count < expected && poll(&ready, 1, kWhile) > 0;) {
      unsigned char frame[2048];
      sockaddr_ll from{};
      socklen_t size = sizeof from;
      ssize_t const got =
          recvfrom(socket_.fd(), frame, sizeof frame, 0, reinterpret_cast<sockaddr*>(&from), &size);
      count += got > 0 && from.sll_pkttype != PACKET_OUTGOING;
    }
    return count;
  }

 private:
  bool sendWith(std::initializer_list<uint16_t> words) const {
    unsigned char frame[64];
    std::memset(frame, 0xff, sizeof frame);
    unsigned char const source[] = {2, 0, 0, 0, 0, last_};
    std::memcpy(frame + 6, source, sizeof source);
    size_t at = 12;
    for (uint16_t const word : words) {
      frame[at++] = static_cast<unsigned char>(word >> 8);
      frame[at++] = static_cast<unsigned char>(word & 0xff);
    }
    return send(socket_.fd(), frame, sizeof frame, 0) == sizeof frame;
  }

  uint8_t const last_;
  uint16_t const type_;
  Linux::Descriptor socket_;
  sockaddr_ll address_{};
};

}  // namespace Kernel
