#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "host/text/Result.h"
#include "linux/process/EventLoop.h"
#include "linux/process/Limits.h"
#include "linux/serve/Listener.h"
#include "linux/serve/Places.h"
#include "linux/serve/StreamProtocol.h"

namespace Linux {

/// Serves the connections of a listener on an event loop, and never blocks: whoever is slow waits
/// alone, and whoever takes too much ends.
///
///     Listener -> place -> Conversation -> answers -> unread -> its other side
class StreamServer {
 public:
  struct Options {
    /// Connections at one time; for a further one another makes room (linux/serve/Places.h), or it
    /// is turned away.
    size_t maxClients = 16;
    /// What a user may not do who isn't admitted, in words.
    std::string purpose = "use this socket";
    /// Octets of answers that may wait for somebody to read them.
    size_t maxUnread = 0;
    /// The same for lines given with `push`.
    size_t maxPushed = Limits::kPushed;
    /// Whatever a connection does, it counts as idle: for a further one, there is always room.
    bool areAllIdle = false;
  };
  struct Counts {
    uint64_t refusedUsers = 0;  ///< connections of somebody who isn't admitted
    uint64_t turnedAway = 0;    ///< connections beyond the most
    uint64_t madeRoom = 0;      ///< connections ended so that another could be had
    uint64_t slowReaders = 0;   ///< connections ended because nobody read the answers
    uint64_t brokenLines = 0;   ///< too long, or ended by the end of the connection
    friend bool operator==(Counts const&, Counts const&) = default;
  };

  /// The loop and the protocol live longer.
  StreamServer(EventLoop& loop, StreamProtocol& protocol, Options options);
  ~StreamServer();
  StreamServer(StreamServer const&) = delete;
  StreamServer& operator=(StreamServer const&) = delete;

  /// Serves what this one listens to, if it does; otherwise the fault is that of the listener.
  Macsecd::Result<> serve(Macsecd::Result<std::unique_ptr<Listener>> listener);
  /// What it serves; null before.
  Listener const* listener() const { return listener_.get(); }

  /// Gives a connection a text; from anywhere, also while another is answered. One whose other side
  /// doesn't read is ended, soon after this returns.
  void push(uint64_t connection, std::string_view text);

  Counts const& counts() const { return counts_; }
  size_t clients() const { return clients_.size(); }

 private:
  struct Client {
    Descriptor socket;
    SocketPeer peer;
    std::unique_ptr<Conversation> conversation;
    std::string unread = {};
    uint64_t lastUsed = 0;    // when it last came up, counted in connections and answers
    bool isAnswered = false;  // ends when all is sent
    bool isSlow = false;      // ends, since its other side doesn't read
  };

  void acceptAll();
  void greet(Descriptor socket);
  void begin(Descriptor socket, SocketPeer peer);
  bool hasPlaceFor(SocketPeer const& peer);
  Place placeOf(Client const& client) const;
  void end(int fd);
  void turnAway(Descriptor const& socket, Macsecd::Fault const& fault);
  void serve(int fd);
  bool catchUp(Client& client);
  bool readFrom(Client& client);
  bool answer(Client& client, std::string_view text);
  void flush(Client& client);
  void endSoon(Client& client);
  void awaitNext(Client const& client);

  EventLoop& loop_;
  StreamProtocol& protocol_;
  Options const options_;
  std::unique_ptr<Listener> listener_;
  std::map<int, std::unique_ptr<Client>> clients_;
  uint64_t connections_ = 0;  // so far
  uint64_t uses_ = 0;         // connections and answers, so far
  Counts counts_;
};

}  // namespace Linux
