#include "linux/serve/UnixListener.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>

#include "linux/process/Limits.h"

namespace Linux {

namespace {

using Macsecd::Fault;
using Macsecd::Result;

Fault failed(std::string const& path, char const* what, char const* remedy) {
  return {path + ": " + what + ": " + std::strerror(errno), remedy};
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

/// Takes away a socket that a former process left. A fault says why the path can't be had.
Result<> clear(std::string const& path, sockaddr_un const& address) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return {};
    return failed(path, "can't be examined", "make its folder readable");
  }
  if (!S_ISSOCK(status.st_mode)) {
    return Fault{path + ": isn't a socket", "name another path, or remove it"};
  }
  Descriptor const probe = streamSocket();
  if (connect(probe.fd(), generic(address), sizeof address) == 0 || errno != ECONNREFUSED) {
    return Fault{path + ": another process listens there", "stop it, or name another path"};
  }
  if (unlink(path.c_str()) == 0) return {};
  return failed(path, "the socket of a former process can't be removed",
                "make its folder writable");
}

class UnixListener final : public Listener {
 public:
  UnixListener(Descriptor socket, std::string const& path) : Listener(std::move(socket), path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) return;
    device_ = status.st_dev;
    inode_ = status.st_ino;
  }
  ~UnixListener() override {
    struct stat status;
    if (lstat(place().c_str(), &status) != 0) return;
    if (status.st_dev == device_ && status.st_ino == inode_) unlink(place().c_str());
  }
  std::optional<SocketPeer> peerOf(Descriptor const& connection) const override;

 private:
  // Which file it made: another one at its path isn't its own.
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

std::optional<SocketPeer> UnixListener::peerOf(Descriptor const& connection) const {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(connection.fd(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return std::nullopt;
  std::array<gid_t, 256> groups;
  socklen_t octets = sizeof groups;
  SocketPeer found{peer.uid, {peer.gid}};
  if (getsockopt(connection.fd(), SOL_SOCKET, SO_PEERGROUPS, groups.data(), &octets) == 0) {
    found.groups.insert(found.groups.end(), groups.begin(),
                        groups.begin() + octets / sizeof(gid_t));
  }
  return found;
}

}  // namespace

Result<std::unique_ptr<Listener>> listenAtPath(std::string const& path, mode_t mode) {
  auto const address = addressOf(path);
  if (!address) return Fault{path + ": is no path for a socket", "give one of 1 to 107 octets"};
  if (auto const cleared = clear(path, *address); !cleared) return cleared.fault();
  Descriptor socket = streamSocket();
  if (!socket.isOpen()) return failed(path, "no socket", "let the process open more files");
  // The file is born with the permissions of its socket, so that nobody slips in before.
  if (fchmod(socket.fd(), mode & 0700) != 0 ||
      bind(socket.fd(), generic(*address), sizeof *address) != 0) {
    return failed(path, "can't be made", "make its folder, writable for this process");
  }
  auto listener = std::make_unique<UnixListener>(std::move(socket), path);
  if (chmod(path.c_str(), mode) != 0 || listen(listener->fd(), Limits::kBacklog) != 0) {
    return failed(path, "can't be listened on", "check the permissions of its folder");
  }
  return listener;
}

}  // namespace Linux
