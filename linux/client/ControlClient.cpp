#include "linux/client/ControlClient.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <optional>

#include "linux/process/Descriptor.h"
#include "linux/process/Limits.h"

namespace Linux {

namespace {

using Macsecd::Fault;
using Macsecd::Result;

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

/// A socket that is connected to the one at `path`, each step of at most so many seconds.
Result<Descriptor> connectedTo(std::string const& path, int seconds) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    return Fault{path + ": too long for a socket", "name one of at most 107 octets"};
  }
  path.copy(address.sun_path, path.size());
  Descriptor fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  timeval const limit{seconds, 0};
  setsockopt(fd.fd(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  setsockopt(fd.fd(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  if (connect(fd.fd(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
    return failed(path, "check that macsecd runs; ask as root or as a member of the group macsec");
  }
  return fd;
}

/// Blocks the signals that end a program, and hears of them.
class EndSignals {
 public:
  EndSignals() {
    sigset_t wanted;
    sigemptyset(&wanted);
    sigaddset(&wanted, SIGINT);
    sigaddset(&wanted, SIGTERM);
    sigprocmask(SIG_BLOCK, &wanted, &former_);
    fd_ = Descriptor(signalfd(-1, &wanted, SFD_CLOEXEC | SFD_NONBLOCK));
  }
  // One that has come isn't to end the program once more.
  ~EndSignals() {
    signalfd_siginfo info;
    while (read(fd_.fd(), &info, sizeof info) > 0) {
    }
    sigprocmask(SIG_SETMASK, &former_, nullptr);
  }
  int fd() const { return fd_.fd(); }

 private:
  sigset_t former_;
  Descriptor fd_;
};

using Clock = std::chrono::steady_clock;

/// Milliseconds until then for `poll`; -1 when there is no end.
int millisecondsUntil(std::optional<Clock::time_point> end) {
  if (!end) return -1;
  auto const left = std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 0, 1'000'000'000));
}

/// Hands the lines over that are whole. False if no more are wanted.
bool takeLines(std::string& text, std::function<bool(std::string_view)> const& take) {
  size_t begin = 0;
  bool goesOn = true;
  for (size_t end; goesOn && (end = text.find('\n', begin)) != text.npos; begin = end + 1) {
    goesOn = take(std::string_view(text).substr(begin, end - begin));
  }
  text.erase(0, begin);
  return goesOn;
}

}  // namespace

Result<std::string> askAt(std::string const& path, std::string const& request, int seconds) {
  auto connected = connectedTo(path, seconds);
  if (!connected) return connected.fault();
  Descriptor const fd = *std::move(connected);
  std::string answer;
  if (!sendAll(fd.fd(), request + "\n") || !readLine(fd.fd(), answer)) {
    return failed(path, "check whether macsecd hangs");
  }
  if (answer.empty()) return Fault{path + ": no answer", "see macsecd's log"};
  return answer;
}

Result<> followAt(std::string const& path, std::string const& request,
                  std::function<bool(std::string_view)> const& take, double seconds) {
  auto connected = connectedTo(path, Limits::kAnswerWait);
  if (!connected) return connected.fault();
  Descriptor const fd = *std::move(connected);
  EndSignals const signals;
  std::optional<Clock::time_point> end;
  if (seconds > 0) {
    end = Clock::now() +
          std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  }
  if (!sendAll(fd.fd(), request + "\n")) return failed(path, "check whether macsecd hangs");
  std::string text;
  std::array<char, 65536> part;
  while (takeLines(text, take)) {
    pollfd waited[] = {{fd.fd(), POLLIN, 0}, {signals.fd(), POLLIN, 0}};
    int const ready = poll(waited, 2, millisecondsUntil(end));
    if (ready == 0 || waited[1].revents != 0) return {};
    ssize_t const got = recv(fd.fd(), part.data(), part.size(), 0);
    if (got < 0 && errno != EINTR) return failed(path, "see macsecd's log");
    if (got == 0) return Fault{path + ": macsecd ended the connection", "see macsecd's log"};
    if (got > 0) text.append(part.data(), static_cast<size_t>(got));
  }
  return {};
}

}  // namespace Linux
