#include "linux/serve/EapKeyFeed.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/eap/EapKeyLine.h"
#include "linux/serve/UnixListener.h"
#include "runtime/Trace.h"

namespace Linux {

namespace {

Vesk::TraceHandle traceHandle("EapKeyFeed");

using Macsecd::Fault;

std::string lineOf(nlohmann::json const& json) {
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string lineOf(Fault const& fault) {
  return lineOf(nlohmann::json{{"error", fault.what}, {"remedy", fault.remedy}});
}

}  // namespace

EapKeyFeed::EapKeyFeed(EventLoop& loop, Vesk::Ptr<Dot1x::EapKeyStatus> keys,
                       EapKeyFeedOptions options)
    : keys_(std::move(keys)),
      options_(std::move(options)),
      protocol_(
          {[this](SocketPeer const& peer) {
             return std::ranges::find(options_.users, peer.user) != options_.users.end();
           },
           [this](SocketPeer const& peer, std::span<uint8_t> line) { return take(peer, line); },
           [](Fault const& fault) { return lineOf(fault); }}),
      server_(loop, protocol_, {.maxClients = options_.maxClients, .purpose = "publish keys"}) {}

Macsecd::Result<> EapKeyFeed::listenAt(std::string const& path) {
  bool const othersToo = std::ranges::any_of(
      options_.users, [](uid_t user) { return user != 0 && user != geteuid(); });
  return server_.serve(listenAtPath(path, othersToo ? 0666 : 0600));
}

std::string EapKeyFeed::take(SocketPeer const& peer, std::span<uint8_t> line) {
  auto const read = Macsecd::readEapKeyLine(line);
  if (!read) return refuse(read.fault());
  Macsecd::EapKeyNews const& news = *read;
  if (news.key) {
    VESK_TRACE(3, ": Publishing a key on ", news.intfId, " for user ", peer.user);
    ++published_;
    keys_->keyIs(news.intfId, *news.key);
  } else {
    VESK_TRACE(3, ": Withdrawing the key on ", news.intfId, " for user ", peer.user);
    ++withdrawn_;
    keys_->keyDel(news.intfId);
  }
  return lineOf(nlohmann::json{{"ok", true}});
}

std::string EapKeyFeed::refuse(Fault const& fault) {
  ++refusedLines_;
  VESK_TRACE(3, ": Refusing a line: ", fault.what);
  return lineOf(fault);
}

EapKeyFeed::Counts EapKeyFeed::counts() const {
  StreamServer::Counts const& server = server_.counts();
  return {.published = published_,
          .withdrawn = withdrawn_,
          .refusedLines = refusedLines_ + server.brokenLines,
          .refusedUsers = server.refusedUsers,
          .turnedAway = server.turnedAway,
          .madeRoom = server.madeRoom,
          .slowReaders = server.slowReaders};
}

}  // namespace Linux
