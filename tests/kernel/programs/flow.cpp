// Numbered datagrams both ways between two network namespaces, so many a second:
//
//   flow RATE SPACE ADDRESS SPACE ADDRESS
//
// SIGTERM ends it: what is under way may still arrive, then one JSON object per direction, from the
// first to the second and back, tells how many were sent and what became of them.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <vector>

#include "linux/process/ProcessWorld.h"
#include "runtime/World.h"
#include "tests/kernel/Wire.h"

namespace Kernel {
namespace {

constexpr uint16_t kPort = 7000;
constexpr int kQuiet = 1000;  // ms without a datagram, after which nothing is under way
constexpr int kMostAtOnce = 32;

volatile std::sig_atomic_t isEnding = 0;

struct Datagram {
  uint64_t number;
  char text[192];
};

sockaddr_in addressOf(char const* text) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(kPort);
  inet_pton(AF_INET, text, &address.sin_addr);
  return address;
}

class End {
 public:
  End(char const* space, char const* address) : address_(addressOf(address)) {
    Inside const inside(space);
    socket_ = Linux::Descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0));
    int const room = 8 << 20;
    setsockopt(socket_.fd(), SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof room);
    setsockopt(socket_.fd(), SOL_SOCKET, SO_SNDBUFFORCE, &room, sizeof room);
    if (bind(socket_.fd(), reinterpret_cast<sockaddr*>(&address_), sizeof address_) != 0) {
      throw std::system_error(errno, std::generic_category(), address);
    }
  }
  int fd() const { return socket_.fd(); }

  void sendTo(End const& other) {
    Datagram datagram{sentAt_.size(), "nobody on the wire may read this"};
    sentAt_.push_back(Vesk::now());
    ssize_t const size =
        sendto(fd(), &datagram, sizeof datagram, 0,
               reinterpret_cast<sockaddr const*>(&other.address_), sizeof other.address_);
    refused_ += size != sizeof datagram;
  }
  bool receiveFrom(End& other) {
    Datagram datagram;
    if (recv(fd(), &datagram, sizeof datagram, 0) != sizeof datagram) return false;
    uint64_t const number = datagram.number;
    if (number >= other.arrived_.size()) other.arrived_.resize(number + 1);
    if (other.arrived_[number]) ++other.twice_;
    if (number < other.next_) ++other.late_;
    other.arrived_[number] = true;
    other.next_ = std::max(other.next_, number + 1);
    return true;
  }
  /// Of the datagrams that this end has sent.
  void tell() {
    arrived_.resize(sentAt_.size());
    auto const lost = std::count(arrived_.begin(), arrived_.end(), false);
    std::printf("{\"sent\": %zu, \"lost\": %td, \"late\": %zu, \"twice\": %zu, \"refused\": %zu, ",
                sentAt_.size(), lost, late_, twice_, refused_);
    std::printf("\"seconds\": %.1f, \"gaps\": [",
                sentAt_.empty() ? 0 : Vesk::now() - sentAt_.front());
    tellGaps();
    std::printf("]}\n");
  }

 private:
  // The first of the lost, how many in a row, and when, in seconds of the monotonic clock.
  void tellGaps() const {
    int told = 0;
    for (size_t at = 0; at < arrived_.size() && told < 20;) {
      size_t to = at;
      while (to < arrived_.size() && !arrived_[to]) ++to;
      if (to > at) std::printf("%s[%zu, %zu, %.3f]", told++ ? ", " : "", at, to - at, sentAt_[at]);
      at = to + 1;
    }
  }

  sockaddr_in address_;
  Linux::Descriptor socket_;
  std::vector<double> sentAt_;
  std::vector<bool> arrived_;
  uint64_t next_ = 0;
  size_t late_ = 0, twice_ = 0, refused_ = 0;
};

bool receive(End& one, End& other) {
  bool const first = one.receiveFrom(other);
  bool const second = other.receiveFrom(one);
  return first || second;
}

void flow(End& one, End& other, double rate) {
  double const start = Vesk::now();
  size_t sent = 0;
  while (!isEnding) {
    auto const due = static_cast<size_t>((Vesk::now() - start) * rate);
    for (int i = 0; i < kMostAtOnce && sent < due; ++i, ++sent) {
      one.sendTo(other);
      other.sendTo(one);
    }
    while (receive(one, other)) {
    }
    pollfd ready[] = {{one.fd(), POLLIN, 0}, {other.fd(), POLLIN, 0}};
    if (sent >= due) poll(ready, 2, 1);
  }
}

void drain(End& one, End& other) {
  pollfd ready[] = {{one.fd(), POLLIN, 0}, {other.fd(), POLLIN, 0}};
  while (poll(ready, 2, kQuiet) > 0) {
    while (receive(one, other)) {
    }
  }
}

}  // namespace
}  // namespace Kernel

int main(int argc, char** argv) {
  if (argc != 6) return 2;
  struct sigaction end {};
  end.sa_handler = [](int) { Kernel::isEnding = 1; };
  sigaction(SIGTERM, &end, nullptr);
  Linux::ProcessWorld world{[](Vesk::LogMessage const&) {}};
  Vesk::WorldScope const scope(world);
  try {
    Kernel::End one(argv[2], argv[3]), other(argv[4], argv[5]);
    Kernel::flow(one, other, std::atof(argv[1]));
    Kernel::drain(one, other);
    one.tell();
    other.tell();
  } catch (std::exception const& error) {
    std::fprintf(stderr, "flow: %s\n", error.what());
    return 1;
  }
}
