#include "linux/process/NamespaceGuard.h"

#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "linux/process/ProcessName.h"
#include "runtime/Log.h"

namespace Linux {

namespace {

Vesk::LogHandle const MACSECD_NAME_TAKEN(
    "MACSECD_NAME_TAKEN", Vesk::LogSeverity::warning,
    "A second daemon in this network namespace wouldn't be noticed: the socket @%s is held by %s",
    "A process that is neither root's nor of the daemon's user has the name by which one daemon "
    "finds another.",
    "See what that process is, and end it.", 0.0, 1.0);

/// An abstract name: it begins with a NUL.
struct Address {
  explicit Address(std::string const& name) {
    octets.sun_family = AF_UNIX;
    size_t const length = std::min(name.size(), sizeof octets.sun_path - 1);
    name.copy(octets.sun_path + 1, length);
    size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + length);
  }
  sockaddr const* generic() const { return reinterpret_cast<sockaddr const*>(&octets); }
  sockaddr_un octets{};
  socklen_t size = 0;
};

Descriptor newSocket() {
  Descriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!made.isOpen()) throw std::system_error(errno, std::generic_category(), "Unix socket");
  return made;
}

/// Who listens there; nobody if that can't be said: a daemon listens, and leaves room to ask.
std::optional<ucred> holderOf(Address const& address) {
  Descriptor const asking = newSocket();
  ucred holder{};
  socklen_t size = sizeof holder;
  if (connect(asking.fd(), address.generic(), address.size) != 0 ||
      getsockopt(asking.fd(), SOL_SOCKET, SO_PEERCRED, &holder, &size) != 0) {
    return std::nullopt;
  }
  return holder;
}

}  // namespace

NamespaceGuard::NamespaceGuard(std::string const& name) : socket_(newSocket()) {
  Address const address(name);
  if (bind(socket_.fd(), address.generic(), address.size) == 0 &&
      listen(socket_.fd(), SOMAXCONN) == 0) {
    return;
  }
  if (errno != EADDRINUSE)
    throw std::system_error(errno, std::generic_category(), "socket @" + name);
  auto const holder = holderOf(address);
  if (holder && (holder->uid == 0 || holder->uid == geteuid())) {
    throw std::runtime_error(
        fmt::format("{} secures the interfaces of this network namespace already; end it first",
                    processName(holder->pid)));
  }
  Vesk::log(MACSECD_NAME_TAKEN, name,
            holder ? fmt::format("user {}, {}", holder->uid, processName(holder->pid))
                   : std::string("a process that can't be asked"));
}

}  // namespace Linux
