#include "linux/serve/LineServer.h"

#include <fmt/format.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "runtime/Trace.h"

namespace Linux {

namespace {

Vesk::TraceHandle traceHandle("LineServer");

using Macsecd::Fault;

// So that one busy side doesn't keep the others waiting.
constexpr int kAcceptsPerRun = 16;

Descriptor newEpoll() {
  Descriptor epoll(epoll_create1(EPOLL_CLOEXEC));
  if (!epoll.isOpen()) throw std::system_error(errno, std::generic_category(), "epoll");
  return epoll;
}

std::optional<SocketPeer> peerOf(Descriptor const& socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(socket.fd(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return std::nullopt;
  std::array<gid_t, 256> groups;
  socklen_t octets = sizeof groups;
  SocketPeer found{peer.uid, {peer.gid}};
  if (getsockopt(socket.fd(), SOL_SOCKET, SO_PEERGROUPS, groups.data(), &octets) == 0) {
    found.groups.insert(found.groups.end(), groups.begin(),
                        groups.begin() + octets / sizeof(gid_t));
  }
  return found;
}

bool isOwner(SocketPeer const& peer) { return peer.user == 0 || peer.user == geteuid(); }

}  // namespace

LineServer::LineServer(Handlers handlers, Options options)
    : handlers_(std::move(handlers)), options_(std::move(options)), epoll_(newEpoll()) {}

LineServer::~LineServer() = default;

std::optional<std::string> LineServer::listenAt(std::string const& path, mode_t mode) {
  auto opened = UnixListener::listenAt(path, mode);
  if (auto* const error = std::get_if<std::string>(&opened)) return std::move(*error);
  listener_.emplace(std::get<UnixListener>(std::move(opened)));
  if (watch(listener_->fd())) return std::nullopt;
  listener_.reset();
  return path + ": can't be watched; raise fs.epoll.max_user_watches";
}

bool LineServer::watch(int fd) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = fd;
  return epoll_ctl(epoll_.fd(), EPOLL_CTL_ADD, fd, &event) == 0;
}

// Who doesn't read the answers isn't asked for more.
void LineServer::watchFor(Client const& client) {
  epoll_event event{};
  event.events = client.unread.empty() ? EPOLLIN : EPOLLOUT;
  event.data.fd = client.socket.fd();
  epoll_ctl(epoll_.fd(), EPOLL_CTL_MOD, event.data.fd, &event);
}

void LineServer::run() {
  std::array<epoll_event, 32> events;
  int const count = epoll_wait(epoll_.fd(), events.data(), events.size(), 0);
  for (int i = 0; i < count; ++i) {
    epoll_event const& event = events[static_cast<size_t>(i)];
    if (listener_ && event.data.fd == listener_->fd()) {
      acceptAll();
    } else {
      serve(event.data.fd, event.events);
    }
  }
}

void LineServer::acceptAll() {
  for (int i = 0; i < kAcceptsPerRun; ++i) {
    Descriptor socket = listener_->accept();
    if (!socket.isOpen()) return;
    greet(std::move(socket));
  }
}

void LineServer::greet(Descriptor socket) {
  auto peer = peerOf(socket);
  if (!peer || !handlers_.admits(*peer)) {
    ++counts_.refusedUsers;
    std::string const who = peer ? fmt::format("user {}", peer->user) : "a nameless user";
    VESK_TRACE(3, ": Refusing the connection of ", who);
    turnAway(socket, Fault{who + " may not " + options_.purpose,
                           "run as root or as a user that the configuration names"});
    return;
  }
  int const fd = socket.fd();
  if (!hasPlaceFor(*peer) || !watch(fd)) {
    ++counts_.turnedAway;
    VESK_TRACE(3, ": Turning away a connection of user ", peer->user, ", ", clients_.size(),
               " open");
    turnAway(socket, Fault{"too many connections", "end one that isn't needed"});
    return;
  }
  VESK_TRACE(3, ": Connection of user ", peer->user);
  peer->connection = ++connections_;
  auto& client = clients_[fd] = std::make_unique<Client>(std::move(socket), *std::move(peer));
  client->lastUsed = ++uses_;
}

Place LineServer::placeOf(Client const& client) const {
  int waiting = 0;
  bool const isAsking = ioctl(client.socket.fd(), FIONREAD, &waiting) == 0 && waiting > 0;
  bool const isTold = handlers_.isToBeTold && handlers_.isToBeTold(client.peer);
  return {.user = client.peer.user,
          .isOwner = isOwner(client.peer),
          .isIdle = client.unread.empty() && !isAsking && !isTold,
          .lastUsed = client.lastUsed};
}

/// Whether there is a place, if need be because another connection gives one up.
bool LineServer::hasPlaceFor(SocketPeer const& peer) {
  if (clients_.size() < options_.maxClients) return true;
  std::vector<Place> places;
  std::vector<int> holders;
  for (auto const& [fd, client] : clients_) {
    places.push_back(placeOf(*client));
    holders.push_back(fd);
  }
  auto const given = placeGivenUp(places, {.user = peer.user, .isOwner = isOwner(peer)});
  if (!given) return false;
  ++counts_.madeRoom;
  Client const& former = *clients_[holders[*given]];
  VESK_TRACE(3, ": A connection of user ", former.peer.user, " makes room for user ", peer.user);
  // Behind half an answer it would be read as the other half.
  if (former.unread.empty()) {
    turnAway(former.socket, Fault{"another connection needed the place", "connect again"});
  }
  end(holders[*given]);
  return true;
}

void LineServer::end(int fd) {
  auto const ended = clients_.extract(fd);
  if (handlers_.ended) handlers_.ended(ended.mapped()->peer);
}

void LineServer::turnAway(Descriptor const& socket, Fault const& fault) {
  std::string const text = handlers_.refuse(fault);
  static_cast<void>(send(socket.fd(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT));
}

void LineServer::serve(int fd, uint32_t events) {
  auto const found = clients_.find(fd);
  if (found == clients_.end()) return;
  Client& client = *found->second;
  bool const wasBehind = !client.unread.empty();
  if (wasBehind) flush(client);
  bool const goesOn = wasBehind ? !(events & EPOLLERR) : readFrom(client);
  if (goesOn) {
    if (wasBehind != !client.unread.empty()) watchFor(client);
    return;
  }
  VESK_TRACE(3, ": End of a connection of user ", client.peer.user);
  end(fd);
}

/// False when the connection has to end.
bool LineServer::readFrom(Client& client) {
  auto const room = client.lines.room();
  ssize_t const got = read(client.socket.fd(), room.data(), room.size());
  if (got < 0) return errno == EAGAIN || errno == EINTR;
  if (got > 0) {
    client.lines.filled(static_cast<size_t>(got));
    return takeLines(client);
  }
  if (client.lines.hasRest()) {
    ++counts_.brokenLines;
    answer(client, handlers_.refuse(
                       {"the connection ended within a line", "end each line with a newline"}));
  }
  return false;
}

bool LineServer::takeLines(Client& client) {
  bool goesOn = true;
  client.lines.takeLines([&](std::span<uint8_t> line) {
    client.lastUsed = ++uses_;
    return goesOn = answer(client, handlers_.take(client.peer, line));
  });
  if (!goesOn || !client.lines.isFull()) return goesOn;
  ++counts_.brokenLines;
  answer(client,
         handlers_.refuse({fmt::format("a line of more than {} octets", LineBuffer::kMaxLine),
                           "end each line with a newline"}));
  return false;
}

/// False when the connection has to end, because its other side doesn't read the answers.
bool LineServer::answer(Client& client, std::string const& text) {
  client.unread += text;
  flush(client);
  if (client.unread.size() <= options_.maxUnread) return true;
  ++counts_.slowReaders;
  VESK_TRACE(3, ": User ", client.peer.user, " doesn't read the answers");
  return false;
}

/// Sends what can be sent. One that has gone already has its lines taken all the same.
void LineServer::flush(Client& client) {
  ssize_t const sent = send(client.socket.fd(), client.unread.data(), client.unread.size(),
                            MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent >= 0) {
    client.unread.erase(0, static_cast<size_t>(sent));
  } else if (errno != EAGAIN && errno != EINTR) {
    client.unread.clear();
  }
}

void LineServer::push(uint64_t connection, std::string_view line) {
  auto const found = std::ranges::find_if(
      clients_, [&](auto const& entry) { return entry.second->peer.connection == connection; });
  if (found == clients_.end() || found->second->isEnding) return;
  Client& client = *found->second;
  bool const wasBehind = !client.unread.empty();
  client.unread += line;
  if (wasBehind && client.unread.size() > options_.maxPushed) return endSoon(client);
  if (wasBehind) return;
  flush(client);
  if (!client.unread.empty()) watchFor(client);
}

// Whoever calls may be in the middle of something that this connection has set off.
void LineServer::endSoon(Client& client) {
  ++counts_.slowReaders;
  VESK_TRACE(3, ": User ", client.peer.user, " doesn't read what is told");
  client.isEnding = true;
  client.unread.clear();
  shutdown(client.socket.fd(), SHUT_RDWR);
  watchFor(client);
}

}  // namespace Linux
