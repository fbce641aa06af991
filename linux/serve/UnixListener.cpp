#include "linux/serve/UnixListener.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <optional>

namespace Linux {

namespace {

constexpr int kBacklog = 16;

std::string failed(std::string const& path, char const* what, char const* remedy) {
  return path + ": " + what + ": " + std::strerror(errno) + "; " + remedy;
}

Descriptor streamSocket() {
  return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

std::optional<sockaddr_un> addressOf(std::string const& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return std::nullopt;
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

sockaddr const* generic(sockaddr_un const& address) {
  return reinterpret_cast<sockaddr const*>(&address);
}

/// Takes away a socket that a former process left. Returns why the path can't be had.
std::optional<std::string> clear(std::string const& path, sockaddr_un const& address) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return std::nullopt;
    return failed(path, "can't be examined", "make its folder readable");
  }
  if (!S_ISSOCK(status.st_mode)) return path + ": isn't a socket; name another path, or remove it";
  Descriptor const probe = streamSocket();
  if (connect(probe.fd(), generic(address), sizeof address) == 0 || errno != ECONNREFUSED) {
    return path + ": another process listens there; stop it, or name another path";
  }
  if (unlink(path.c_str()) == 0) return std::nullopt;
  return failed(path, "the socket of a former process can't be removed",
                "make its folder writable");
}

}  // namespace

std::variant<UnixListener, std::string> UnixListener::listenAt(std::string const& path,
                                                               mode_t mode) {
  auto const address = addressOf(path);
  if (!address) return path + ": is no path for a socket; give one of 1 to 107 octets";
  if (auto error = clear(path, *address)) return *std::move(error);
  Descriptor socket = streamSocket();
  if (!socket.isOpen()) return failed(path, "no socket", "let the process open more files");
  // The file is born with the permissions of its socket, so that nobody slips in before.
  if (fchmod(socket.fd(), mode & 0700) != 0 ||
      bind(socket.fd(), generic(*address), sizeof *address) != 0) {
    return failed(path, "can't be made", "make its folder, writable for this process");
  }
  UnixListener listener(std::move(socket), path);
  if (chmod(path.c_str(), mode) != 0 || listen(listener.fd(), kBacklog) != 0) {
    return failed(path, "can't be listened on", "check the permissions of its folder");
  }
  return listener;
}

UnixListener::UnixListener(Descriptor socket, std::string const& path)
    : socket_(std::move(socket)), spare_(dup(socket_.fd())), path_(path) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0) return;
  device_ = status.st_dev;
  inode_ = status.st_ino;
}

UnixListener::~UnixListener() {
  struct stat status;
  if (!socket_.isOpen() || lstat(path_.c_str(), &status) != 0) return;
  if (status.st_dev == device_ && status.st_ino == inode_) unlink(path_.c_str());
}

Descriptor UnixListener::accept() {
  auto const take = [this] {
    return Descriptor(accept4(socket_.fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  };
  Descriptor taken = take();
  if (taken.isOpen() || (errno != EMFILE && errno != ENFILE)) return taken;
  // The process has no more descriptors: whoever waits is turned away.
  spare_ = Descriptor();
  take();
  spare_ = Descriptor(dup(socket_.fd()));
  return Descriptor();
}

}  // namespace Linux
