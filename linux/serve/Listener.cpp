#include "linux/serve/Listener.h"

#include <sys/socket.h>

#include <cerrno>

namespace Linux {

Listener::Listener(Descriptor socket, std::string place)
    : socket_(std::move(socket)), spare_(dup(socket_.fd())), place_(std::move(place)) {}

Descriptor Listener::accept() {
  auto const take = [this] {
    return Descriptor(accept4(fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  };
  Descriptor taken = take();
  if (taken.isOpen() || (errno != EMFILE && errno != ENFILE)) return taken;
  // The process has no more descriptors: whoever waits is turned away.
  spare_ = Descriptor();
  take();
  spare_ = Descriptor(dup(fd()));
  return Descriptor();
}

}  // namespace Linux
