#include "linux/net/EapolSocket.h"

#include <arpa/inet.h>
#include <linux/if_packet.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "linux/net/EapolFilter.h"
#include "linux/process/Limits.h"
#include "model/MacsecConstants.h"

namespace Linux {

namespace {

constexpr std::array<uint8_t, 6> kPaeGroup = {0x01, 0x80, 0xc2, 0x00, 0x00, 0x03};
constexpr size_t kAddrOctets = 6;

Macsecd::Fault failed(char const* what) {
  char const* const remedy = errno == EPERM    ? "give the process CAP_NET_RAW"
                             : errno == ENODEV ? "it will be tried again when it is there"
                                               : "it will be tried again";
  return {std::string(what) + ": " + std::strerror(errno), remedy};
}

// A card passes no group address that nobody has joined.
bool joinGroup(int socket, int index) {
  packet_mreq request{};
  request.mr_ifindex = index;
  request.mr_type = PACKET_MR_MULTICAST;
  request.mr_alen = kAddrOctets;
  std::ranges::copy(kPaeGroup, request.mr_address);
  return setsockopt(socket, SOL_PACKET, PACKET_ADD_MEMBERSHIP, &request, sizeof request) == 0;
}

bool bindTo(int socket, int index) {
  sockaddr_ll address{};
  address.sll_family = AF_PACKET;
  address.sll_protocol = htons(Macsec::MacsecConstants::eapolEthType);
  address.sll_ifindex = index;
  return bind(socket, reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0;
}

// Frames that are taken from a socket at once: a flood costs one call for all of them. The room is
// shared by all sockets, of which one is read at a time.
class Batch {
 public:
  static constexpr size_t kFrames = 16;

  Batch() {
    for (size_t i = 0; i < kFrames; ++i) {
      parts_[i] = {octets_[i].data(), octets_[i].size()};
      messages_[i].msg_hdr.msg_iov = &parts_[i];
      messages_[i].msg_hdr.msg_iovlen = 1;
    }
  }
  /// How many came; negative, with errno, if none did.
  int take(int socket, size_t most) {
    return recvmmsg(socket, messages_.data(), static_cast<unsigned>(most), 0, nullptr);
  }
  std::span<uint8_t const> frame(size_t i) const {
    return std::span(octets_[i]).first(messages_[i].msg_len);
  }

 private:
  std::array<std::array<uint8_t, EapolSocket::kMostOctets>, kFrames> octets_;
  std::array<iovec, kFrames> parts_ = {};
  std::array<mmsghdr, kFrames> messages_ = {};
};

}  // namespace

EapolSocket::Counts& EapolSocket::Counts::operator+=(Counts const& o) {
  received += o.received;
  receiveErrors += o.receiveErrors;
  dropped += o.dropped;
  sent += o.sent;
  sendFailures += o.sendFailures;
  return *this;
}

// Without a protocol nothing comes in before the filter is there and the socket bound.
Macsecd::Result<EapolSocket> EapolSocket::openOn(int index) {
  Descriptor socket(::socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket.isOpen()) return failed("no packet socket");
  if (!attachEapolFilter(socket.fd())) return failed("no filter on the packet socket");
  if (!joinGroup(socket.fd(), index)) return failed("01:80:c2:00:00:03 can't be joined");
  if (!bindTo(socket.fd(), index)) return failed("the packet socket can't be bound");
  // Room for the bursts of a flood; with less, frames are lost sooner.
  setsockopt(socket.fd(), SOL_SOCKET, SO_RCVBUFFORCE, &Limits::kFrameRoom,
             sizeof Limits::kFrameRoom);
  return EapolSocket(std::move(socket));
}

// That the interface went down is told once, in a frame's place.
void EapolSocket::receive(size_t most, Receiver const& receiver) {
  static Batch batch;
  for (size_t done = 0; done < most;) {
    int const got = batch.take(socket_.fd(), std::min(most - done, Batch::kFrames));
    if (got < 0 && errno == EAGAIN) return;
    if (got < 0) {
      ++counts_.receiveErrors;
      ++done;
      continue;
    }
    counts_.received += static_cast<size_t>(got);
    for (size_t i = 0; i < static_cast<size_t>(got); ++i) receiver(batch.frame(i));
    if (static_cast<size_t>(got) < Batch::kFrames) return;
    done += static_cast<size_t>(got);
  }
}

bool EapolSocket::send(std::span<uint8_t const> frame) {
  ssize_t const sent = ::send(socket_.fd(), frame.data(), frame.size(), MSG_NOSIGNAL);
  bool const isWhole = sent == static_cast<ssize_t>(frame.size());
  ++(isWhole ? counts_.sent : counts_.sendFailures);
  return isWhole;
}

// The kernel counts anew whenever it is asked.
EapolSocket::Counts const& EapolSocket::counts() {
  tpacket_stats stats{};
  socklen_t size = sizeof stats;
  if (getsockopt(socket_.fd(), SOL_PACKET, PACKET_STATISTICS, &stats, &size) == 0) {
    counts_.dropped += stats.tp_drops;
  }
  return counts_;
}

}  // namespace Linux
