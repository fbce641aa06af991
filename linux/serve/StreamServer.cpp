#include "linux/serve/StreamServer.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "linux/process/Limits.h"
#include "runtime/Trace.h"

namespace Linux {

namespace {

Vesk::TraceHandle traceHandle("StreamServer");

using Macsecd::Fault;

bool isOwner(SocketPeer const& peer) { return peer.user == 0 || peer.user == geteuid(); }

bool hasFailed(Descriptor const& socket) {
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(socket.fd(), SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0;
}

}  // namespace

StreamServer::StreamServer(EventLoop& loop, StreamProtocol& protocol, Options options)
    : loop_(loop), protocol_(protocol), options_(std::move(options)) {}

StreamServer::~StreamServer() {
  for (auto const& [fd, client] : clients_) loop_.forget(fd);
  if (listener_) loop_.forget(listener_->fd());
}

Macsecd::Result<> StreamServer::serve(Macsecd::Result<std::unique_ptr<Listener>> listener) {
  if (!listener) return listener.fault();
  auto opened = *std::move(listener);
  if (auto const watched = loop_.watch(opened->fd(), [this] { acceptAll(); }); !watched) {
    return Fault{opened->place() + ": can't be watched", watched.fault().remedy};
  }
  listener_ = std::move(opened);
  return {};
}

// Who doesn't read the answers isn't asked for more.
void StreamServer::awaitNext(Client const& client) {
  loop_.awaitedIs(client.socket.fd(),
                  client.unread.empty() ? EventLoop::Awaited::octets : EventLoop::Awaited::room);
}

void StreamServer::acceptAll() {
  for (int i = 0; i < Limits::kAcceptsPerTurn; ++i) {
    Descriptor socket = listener_->accept();
    if (!socket.isOpen()) return;
    greet(std::move(socket));
  }
}

void StreamServer::greet(Descriptor socket) {
  auto peer = listener_->peerOf(socket);
  if (!peer || !protocol_.admits(*peer)) {
    ++counts_.refusedUsers;
    std::string const who = peer ? fmt::format("user {}", peer->user) : "a nameless user";
    VESK_TRACE(3, ": Refusing the connection of ", who);
    turnAway(socket, Fault{who + " may not " + options_.purpose,
                           "run as root or as a user that the configuration names"});
    return;
  }
  int const fd = socket.fd();
  if (!hasPlaceFor(*peer) || !loop_.watch(fd, [this, fd] { serve(fd); })) {
    ++counts_.turnedAway;
    VESK_TRACE(3, ": Turning away a connection of user ", peer->user, ", ", clients_.size(),
               " open");
    turnAway(socket, Fault{"too many connections", "end one that isn't needed"});
    return;
  }
  begin(std::move(socket), *std::move(peer));
}

void StreamServer::begin(Descriptor socket, SocketPeer peer) {
  VESK_TRACE(3, ": Connection of user ", peer.user);
  peer.connection = ++connections_;
  int const fd = socket.fd();
  auto conversation = protocol_.begin(peer);
  clients_[fd] = std::make_unique<Client>(
      Client{std::move(socket), std::move(peer), std::move(conversation), {}, ++uses_});
}

Place StreamServer::placeOf(Client const& client) const {
  int waiting = 0;
  bool const isAsking = ioctl(client.socket.fd(), FIONREAD, &waiting) == 0 && waiting > 0;
  bool const isBusy = isAsking || !client.unread.empty() || protocol_.isToBeTold(client.peer);
  return {.user = client.peer.user,
          .isOwner = isOwner(client.peer),
          .isIdle = options_.areAllIdle || !isBusy,
          .lastUsed = client.lastUsed};
}

/// Whether there is a place, if need be because another connection gives one up.
bool StreamServer::hasPlaceFor(SocketPeer const& peer) {
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

void StreamServer::end(int fd) {
  loop_.forget(fd);
  auto const ended = clients_.extract(fd);
  protocol_.ended(ended.mapped()->peer);
}

void StreamServer::turnAway(Descriptor const& socket, Fault const& fault) {
  std::string const text = protocol_.refusal(fault);
  static_cast<void>(send(socket.fd(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT));
}

void StreamServer::serve(int fd) {
  Client& client = *clients_.at(fd);
  bool const wasBehind = !client.unread.empty();
  bool const goesOn = wasBehind ? catchUp(client) : readFrom(client);
  if (goesOn && !(client.isAnswered && client.unread.empty())) {
    if (wasBehind != !client.unread.empty()) awaitNext(client);
    return;
  }
  VESK_TRACE(3, ": End of a connection of user ", client.peer.user);
  end(fd);
}

/// False when the connection has ended.
bool StreamServer::catchUp(Client& client) {
  bool const isThere = !hasFailed(client.socket);
  flush(client);
  return isThere;
}

/// False when the connection has to end.
bool StreamServer::readFrom(Client& client) {
  auto const room = client.conversation->room();
  ssize_t const got = read(client.socket.fd(), room.data(), room.size());
  if (got < 0) return errno == EAGAIN || errno == EINTR;
  auto const answers = [&](std::string_view text) { return answer(client, text); };
  auto const verdict = got > 0 ? client.conversation->take(static_cast<size_t>(got), answers)
                               : client.conversation->inputEnds(answers);
  if (verdict == Conversation::Verdict::isBroken) ++counts_.brokenLines;
  client.isAnswered = verdict == Conversation::Verdict::ends;
  return got > 0 && !client.isSlow && verdict != Conversation::Verdict::isBroken;
}

/// False when the connection has to end, because its other side doesn't read the answers.
bool StreamServer::answer(Client& client, std::string_view text) {
  client.lastUsed = ++uses_;
  client.unread += text;
  flush(client);
  if (client.unread.size() <= options_.maxUnread) return true;
  ++counts_.slowReaders;
  VESK_TRACE(3, ": User ", client.peer.user, " doesn't read the answers");
  client.isSlow = true;
  return false;
}

/// Sends what can be sent. One that has gone already has its lines taken all the same.
void StreamServer::flush(Client& client) {
  ssize_t const sent = send(client.socket.fd(), client.unread.data(), client.unread.size(),
                            MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent >= 0) {
    client.unread.erase(0, static_cast<size_t>(sent));
  } else if (errno != EAGAIN && errno != EINTR) {
    client.unread.clear();
  }
}

void StreamServer::push(uint64_t connection, std::string_view text) {
  auto const found = std::ranges::find_if(
      clients_, [&](auto const& entry) { return entry.second->peer.connection == connection; });
  if (found == clients_.end() || found->second->isSlow) return;
  Client& client = *found->second;
  bool const wasBehind = !client.unread.empty();
  client.unread += text;
  if (wasBehind && client.unread.size() > options_.maxPushed) return endSoon(client);
  if (wasBehind) return;
  flush(client);
  if (!client.unread.empty()) awaitNext(client);
}

// Whoever calls may be in the middle of something that this connection has set off.
void StreamServer::endSoon(Client& client) {
  ++counts_.slowReaders;
  VESK_TRACE(3, ": User ", client.peer.user, " doesn't read what is told");
  client.isSlow = true;
  client.unread.clear();
  shutdown(client.socket.fd(), SHUT_RDWR);
  awaitNext(client);
}

}  // namespace Linux
