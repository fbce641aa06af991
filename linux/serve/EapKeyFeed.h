#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "linux/process/Limits.h"
#include "linux/serve/LineProtocol.h"
#include "linux/serve/StreamServer.h"
#include "platform/EapKeyStatus.h"

namespace Linux {

struct EapKeyFeedOptions {
  /// Whose processes may publish.
  std::vector<uid_t> users = {0, geteuid()};
  /// Connections at one time; for a further one an idle one makes room.
  size_t maxClients = Limits::kEapClients;
};

/// Takes keys from 802.1X authenticators and supplicants, which are other programs, and publishes
/// them: one JSON object on each line of a Unix stream socket (`readEapKeyLine`), one answer on a
/// line to each, {"ok":true} or {"error":"...","remedy":"..."}. The end of a connection withdraws
/// nothing. The loop runs in the world of the switch (`Vesk::WorldScope`).
class EapKeyFeed {
 public:
  /// What has come so far.
  struct Counts {
    uint64_t published = 0;
    uint64_t withdrawn = 0;
    uint64_t refusedLines = 0;
    uint64_t refusedUsers = 0;  ///< connections of somebody who may not publish
    uint64_t turnedAway = 0;    ///< connections beyond the most
    uint64_t madeRoom = 0;      ///< connections ended so that another could be had
    uint64_t slowReaders = 0;   ///< connections ended because nobody read the answers
    friend bool operator==(Counts const&, Counts const&) = default;
  };

  /// The loop lives longer.
  EapKeyFeed(EventLoop& loop, Vesk::Ptr<Dot1x::EapKeyStatus> keys, EapKeyFeedOptions options = {});

  /// Opens the socket at this path. The file is for its owner alone, unless others may publish:
  /// then everybody can connect, and is asked who it is. A fault has the path in front.
  Macsecd::Result<> listenAt(std::string const& path);

  Counts counts() const;
  /// Those of the socket alone.
  StreamServer::Counts const& socketCounts() const { return server_.counts(); }
  size_t clients() const { return server_.clients(); }

 private:
  std::string take(SocketPeer const& peer, std::span<uint8_t> line);
  std::string refuse(Macsecd::Fault const& fault);

  Vesk::Ptr<Dot1x::EapKeyStatus> const keys_;
  EapKeyFeedOptions const options_;
  uint64_t published_ = 0;
  uint64_t withdrawn_ = 0;
  uint64_t refusedLines_ = 0;
  LineProtocol protocol_;
  StreamServer server_;
};

}  // namespace Linux
