#include "linux/serve/MetricsServer.h"

#include <fmt/format.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "linux/serve/LoopbackListener.h"

namespace Linux {

namespace {

constexpr uint64_t kListener = 0;
constexpr char const* kMetrics = "text/plain; version=0.0.4; charset=utf-8";
constexpr char const* kWords = "text/plain; charset=utf-8";

Descriptor newEpoll() {
  Descriptor epoll(epoll_create1(EPOLL_CLOEXEC));
  if (!epoll.isOpen()) throw std::system_error(errno, std::generic_category(), "epoll");
  return epoll;
}

std::string answerOf(char const* status, char const* type, std::string const& body, bool isHead) {
  std::string const head = fmt::format(
      "HTTP/1.0 {}\r\nContent-Type: {}\r\nContent-Length: {}\r\nConnection: close\r\n\r\n", status,
      type, body.size());
  return isHead ? head : head + body;
}

/// Takes the word in front of the next blank, and the blank.
std::string_view word(std::string_view& line) {
  std::string_view const found = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(found.size() + 1, line.size()));
  return found;
}

}  // namespace

MetricsServer::MetricsServer(std::function<std::string()> text)
    : text_(std::move(text)), epoll_(newEpoll()) {}

MetricsServer::~MetricsServer() = default;

std::optional<std::string> MetricsServer::listenAt(std::string const& address) {
  auto opened = listenAtLoopback(address);
  if (auto* const error = std::get_if<std::string>(&opened)) return std::move(*error);
  listener_ = std::get<Descriptor>(std::move(opened));
  if (watch(kListener, listener_.fd())) return std::nullopt;
  return address + ": can't be watched; raise fs.epoll.max_user_watches";
}

uint16_t MetricsServer::port() const {
  return listener_.isOpen() ? portOf(listener_) : uint16_t{0};
}

bool MetricsServer::watch(uint64_t number, int fd) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = number;
  return epoll_ctl(epoll_.fd(), EPOLL_CTL_ADD, fd, &event) == 0;
}

void MetricsServer::run() {
  std::array<epoll_event, 2 * kMaxConnections> events;
  int const count = epoll_wait(epoll_.fd(), events.data(), events.size(), 0);
  for (int i = 0; i < count; ++i) {
    uint64_t const number = events[static_cast<size_t>(i)].data.u64;
    if (number == kListener) {
      accept();
      continue;
    }
    auto const found = connections_.find(number);
    if (found != connections_.end() && !serve(number, found->second)) connections_.erase(found);
  }
}

void MetricsServer::accept() {
  Descriptor socket(accept4(listener_.fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (!socket.isOpen()) {
    // The process has no more descriptors: one that is held for nothing is given up.
    if ((errno == EMFILE || errno == ENFILE) && !connections_.empty()) {
      connections_.erase(connections_.begin());
    }
    return;
  }
  uint64_t const number = ++accepted_;
  if (!watch(number, socket.fd())) return;
  if (connections_.size() >= kMaxConnections) connections_.erase(connections_.begin());
  connections_[number].socket = std::move(socket);
}

/// False when the connection has ended, or has to.
bool MetricsServer::serve(uint64_t number, Connection& connection) {
  bool const wasAsked = !connection.answer.empty();
  if (!wasAsked && !read(connection)) return false;
  if (connection.answer.empty()) return true;
  if (!write(connection)) return false;
  if (wasAsked) return true;
  epoll_event event{};
  event.events = EPOLLOUT;
  event.data.u64 = number;
  return epoll_ctl(epoll_.fd(), EPOLL_CTL_MOD, connection.socket.fd(), &event) == 0;
}

bool MetricsServer::read(Connection& connection) {
  std::array<char, 4096> part;
  ssize_t const got = recv(connection.socket.fd(), part.data(), part.size(), 0);
  if (got < 0) return errno == EAGAIN || errno == EINTR;
  if (got == 0) return false;
  connection.request.append(part.data(), static_cast<size_t>(got));
  if (connection.request.find("\r\n\r\n") != std::string::npos) {
    connection.answer = answerTo(connection.request);
  } else if (connection.request.size() > kMaxRequest) {
    connection.answer = answerOf("431 Request Header Fields Too Large", kWords, "", false);
  }
  return true;
}

/// False when all is sent, or nobody takes it any more.
bool MetricsServer::write(Connection& connection) {
  std::string& answer = connection.answer;
  ssize_t const sent = send(connection.socket.fd(), answer.data(), answer.size(), MSG_NOSIGNAL);
  if (sent < 0) return errno == EAGAIN || errno == EINTR;
  answer.erase(0, static_cast<size_t>(sent));
  return !answer.empty();
}

std::string MetricsServer::answerTo(std::string const& request) const {
  std::string_view line = std::string_view(request).substr(0, request.find("\r\n"));
  std::string_view const method = word(line);
  std::string_view const path = word(line);
  if (!line.starts_with("HTTP/1.")) return answerOf("400 Bad Request", kWords, "", false);
  bool const isHead = method == "HEAD";
  if (!isHead && method != "GET") return answerOf("405 Method Not Allowed", kWords, "", false);
  if (path != "/metrics") return answerOf("404 Not Found", kWords, "see /metrics\n", isHead);
  return answerOf("200 OK", kMetrics, text_(), isHead);
}

}  // namespace Linux
