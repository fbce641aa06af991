#include "linux/EapKeyFeed.h"

#include <fmt/format.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <system_error>

#include "host/EapKeyLine.h"
#include "runtime/Trace.h"

namespace Linux {

namespace {

Vesk::TraceHandle traceHandle("EapKeyFeed");

using Macsecd::Fault;

// So that one busy side doesn't keep the others waiting.
constexpr int kAcceptsPerRun = 16;

Descriptor newEpoll() {
  Descriptor epoll(epoll_create1(EPOLL_CLOEXEC));
  if (!epoll.isOpen()) throw std::system_error(errno, std::generic_category(), "epoll");
  return epoll;
}

std::optional<uid_t> userOf(Descriptor const& socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(socket.fd(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return std::nullopt;
  return peer.uid;
}

std::string lineOf(nlohmann::json const& json) {
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string lineOf(Fault const& fault) {
  return lineOf(nlohmann::json{{"error", fault.what}, {"remedy", fault.remedy}});
}

enum class Sent : uint8_t { whole, toNobody, notWhole };

Sent sendNow(Descriptor const& socket, std::string const& text) {
  ssize_t const sent = send(socket.fd(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent == static_cast<ssize_t>(text.size())) return Sent::whole;
  bool const isGone = sent < 0 && (errno == EPIPE || errno == ECONNRESET);
  return isGone ? Sent::toNobody : Sent::notWhole;
}

}  // namespace

EapKeyFeed::EapKeyFeed(Vesk::Ptr<Dot1x::EapKeyStatus> keys, EapKeyFeedOptions options)
    : keys_(std::move(keys)), options_(std::move(options)), epoll_(newEpoll()) {}

EapKeyFeed::~EapKeyFeed() = default;

std::optional<std::string> EapKeyFeed::listenAt(std::string const& path) {
  bool const othersToo = std::ranges::any_of(
      options_.users, [](uid_t user) { return user != 0 && user != geteuid(); });
  auto opened = UnixListener::listenAt(path, othersToo ? 0666 : 0600);
  if (auto* const error = std::get_if<std::string>(&opened)) return std::move(*error);
  listener_.emplace(std::get<UnixListener>(std::move(opened)));
  if (watch(listener_->fd())) return std::nullopt;
  listener_.reset();
  return path + ": can't be watched; raise fs.epoll.max_user_watches";
}

bool EapKeyFeed::watch(int fd) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = fd;
  return epoll_ctl(epoll_.fd(), EPOLL_CTL_ADD, fd, &event) == 0;
}

void EapKeyFeed::run() {
  std::array<epoll_event, 32> events;
  int const count = epoll_wait(epoll_.fd(), events.data(), events.size(), 0);
  for (int i = 0; i < count; ++i) {
    int const fd = events[static_cast<size_t>(i)].data.fd;
    if (listener_ && fd == listener_->fd()) {
      acceptAll();
    } else {
      serve(fd);
    }
  }
}

void EapKeyFeed::acceptAll() {
  for (int i = 0; i < kAcceptsPerRun; ++i) {
    Descriptor socket = listener_->accept();
    if (!socket.isOpen()) return;
    greet(std::move(socket));
  }
}

void EapKeyFeed::greet(Descriptor socket) {
  std::optional<uid_t> const user = userOf(socket);
  if (!user || std::ranges::find(options_.users, *user) == options_.users.end()) {
    ++counts_.refusedUsers;
    std::string const who = user ? fmt::format("user {}", *user) : "a nameless user";
    VESK_TRACE(3, ": Refusing the connection of ", who);
    sendNow(socket, lineOf(Fault{who + " may not publish keys",
                                 "run as root or as a user that the configuration names"}));
    return;
  }
  int const fd = socket.fd();
  if (clients_.size() >= options_.maxClients || !watch(fd)) {
    ++counts_.turnedAway;
    VESK_TRACE(3, ": Turning away a connection of user ", *user, ", ", clients_.size(), " open");
    sendNow(socket, lineOf(Fault{"too many connections", "end one that isn't needed"}));
    return;
  }
  VESK_TRACE(3, ": Connection of user ", *user);
  clients_[fd] = std::make_unique<Client>(std::move(socket), *user);
}

void EapKeyFeed::serve(int fd) {
  auto const client = clients_.find(fd);
  if (client == clients_.end() || readFrom(*client->second)) return;
  VESK_TRACE(3, ": End of a connection of user ", client->second->user);
  clients_.erase(client);
}

/// False when the connection has to end.
bool EapKeyFeed::readFrom(Client& client) {
  auto const room = client.lines.room();
  ssize_t const got = read(client.socket.fd(), room.data(), room.size());
  if (got < 0) return errno == EAGAIN || errno == EINTR;
  if (got > 0) {
    client.lines.filled(static_cast<size_t>(got));
    return takeLines(client);
  }
  if (client.lines.hasRest()) {
    refuse(client, {"the connection ended within a line", "end each line with a newline"});
  }
  return false;
}

bool EapKeyFeed::takeLines(Client& client) {
  bool goesOn = true;
  client.lines.takeLines([&](std::span<uint8_t> line) { return goesOn = take(client, line); });
  if (!goesOn || !client.lines.isFull()) return goesOn;
  refuse(client, {fmt::format("a line of more than {} octets", LineBuffer::kMaxLine),
                  "end each line with a newline"});
  return false;
}

bool EapKeyFeed::take(Client const& client, std::span<uint8_t> line) {
  auto const read = Macsecd::readEapKeyLine(line);
  if (auto const* const fault = std::get_if<Fault>(&read)) return refuse(client, *fault);
  auto const& news = std::get<Macsecd::EapKeyNews>(read);
  if (news.key) {
    VESK_TRACE(3, ": Publishing a key on ", news.intfId, " for user ", client.user);
    ++counts_.published;
    keys_->keyIs(news.intfId, *news.key);
  } else {
    VESK_TRACE(3, ": Withdrawing the key on ", news.intfId, " for user ", client.user);
    ++counts_.withdrawn;
    keys_->keyDel(news.intfId);
  }
  return answer(client, lineOf(nlohmann::json{{"ok", true}}));
}

bool EapKeyFeed::refuse(Client const& client, Fault const& fault) {
  ++counts_.refusedLines;
  VESK_TRACE(3, ": Refusing a line of user ", client.user, ": ", fault.what);
  return answer(client, lineOf(fault));
}

/// False when the connection has to end, because its other side doesn't read the answers. One that
/// has gone already has its lines taken all the same.
bool EapKeyFeed::answer(Client const& client, std::string const& text) {
  if (sendNow(client.socket, text) != Sent::notWhole) return true;
  ++counts_.slowReaders;
  VESK_TRACE(3, ": User ", client.user, " doesn't read the answers");
  return false;
}

}  // namespace Linux
