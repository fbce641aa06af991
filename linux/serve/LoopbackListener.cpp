#include "linux/serve/LoopbackListener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

#include "linux/process/Limits.h"

namespace Linux {

namespace {

using Macsecd::Fault;

union Address {
  sockaddr any;
  sockaddr_in v4;
  sockaddr_in6 v6;
};

std::optional<uint16_t> portIn(std::string_view text) {
  uint16_t port = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return port;
}

std::optional<Address> addressOf(std::string_view text) {
  size_t const colon = text.rfind(':');
  if (colon == text.npos) return std::nullopt;
  auto const port = portIn(text.substr(colon + 1));
  std::string host(text.substr(0, colon));
  if (!port) return std::nullopt;
  Address address{};
  if (host.starts_with('[') && host.ends_with(']')) {
    host = host.substr(1, host.size() - 2);
    address.v6.sin6_family = AF_INET6;
    address.v6.sin6_port = htons(*port);
    if (inet_pton(AF_INET6, host.c_str(), &address.v6.sin6_addr) == 1) return address;
    return std::nullopt;
  }
  address.v4.sin_family = AF_INET;
  address.v4.sin_port = htons(*port);
  if (inet_pton(AF_INET, host.c_str(), &address.v4.sin_addr) == 1) return address;
  return std::nullopt;
}

bool isLoopback(Address const& address) {
  if (address.any.sa_family == AF_INET6) return IN6_IS_ADDR_LOOPBACK(&address.v6.sin6_addr);
  return ntohl(address.v4.sin_addr.s_addr) >> 24 == 127;
}

// TCP doesn't tell who asks.
class LoopbackListener final : public Listener {
 public:
  LoopbackListener(Descriptor socket, std::string address)
      : Listener(std::move(socket), std::move(address)) {}
  std::optional<SocketPeer> peerOf(Descriptor const&) const override {
    return SocketPeer{kNobodyKnown, {}};
  }

 private:
  static constexpr uid_t kNobodyKnown = static_cast<uid_t>(-1);
};

}  // namespace

Macsecd::Result<std::unique_ptr<Listener>> listenAtLoopback(std::string const& text) {
  auto const address = addressOf(text);
  if (!address) {
    return Fault{text + ": is no address with a port", "write 127.0.0.1:9464 or [::1]:9464"};
  }
  if (!isLoopback(*address)) {
    return Fault{text + ": others could reach it", "name a loopback address, as 127.0.0.1:9464"};
  }
  bool const isV6 = address->any.sa_family == AF_INET6;
  Descriptor socket(
      ::socket(address->any.sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  int const on = 1;
  setsockopt(socket.fd(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  socklen_t const size = isV6 ? sizeof address->v6 : sizeof address->v4;
  if (bind(socket.fd(), &address->any, size) == 0 && listen(socket.fd(), Limits::kBacklog) == 0) {
    return std::make_unique<LoopbackListener>(std::move(socket), text);
  }
  return Fault{text + ": " + std::strerror(errno),
               "stop the program that listens there, or name another port"};
}

uint16_t portOf(int socket) {
  Address address{};
  socklen_t size = sizeof address;
  if (getsockname(socket, &address.any, &size) != 0) return 0;
  return ntohs(address.any.sa_family == AF_INET6 ? address.v6.sin6_port : address.v4.sin_port);
}

}  // namespace Linux
