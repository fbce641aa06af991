#include "linux/ControlClient.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "linux/Descriptor.h"

namespace Linux {

namespace {

using Macsecd::Fault;

Fault failed(std::string const& path, char const* remedy) {
  return {path + ": " + std::strerror(errno), remedy};
}

bool sendAll(int fd, std::string const& text) {
  for (size_t at = 0; at < text.size();) {
    ssize_t const sent = send(fd, text.data() + at, text.size() - at, MSG_NOSIGNAL);
    if (sent < 0 && errno != EINTR) return false;
    if (sent > 0) at += static_cast<size_t>(sent);
  }
  return true;
}

/// Up to the end of the line, or of the connection.
bool readLine(int fd, std::string& line) {
  std::array<char, 65536> part;
  while (line.empty() || line.back() != '\n') {
    ssize_t const got = recv(fd, part.data(), part.size(), 0);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) break;
    line.append(part.data(), static_cast<size_t>(got));
  }
  if (!line.empty() && line.back() == '\n') line.pop_back();
  return true;
}

}  // namespace

std::variant<std::string, Fault> askAt(std::string const& path, std::string const& request,
                                       int seconds) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    return Fault{path + ": too long for a socket", "name one of at most 107 octets"};
  }
  path.copy(address.sun_path, path.size());
  Descriptor const fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  timeval const limit{seconds, 0};
  setsockopt(fd.fd(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  setsockopt(fd.fd(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  if (connect(fd.fd(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
    return failed(path, "see that macsecd runs, and ask as root or as a member of its group");
  }
  std::string answer;
  if (!sendAll(fd.fd(), request + "\n") || !readLine(fd.fd(), answer)) {
    return failed(path, "see whether macsecd is stuck");
  }
  if (answer.empty()) return Fault{path + ": no answer", "see macsecd's log"};
  return answer;
}

}  // namespace Linux
