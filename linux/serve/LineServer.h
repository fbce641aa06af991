#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/KeyText.h"
#include "linux/process/Descriptor.h"
#include "linux/serve/LineBuffer.h"
#include "linux/serve/Places.h"
#include "linux/serve/UnixListener.h"

namespace Linux {

/// Who is at the other side of a Unix socket, as the kernel says it.
struct SocketPeer {
  uid_t user = 0;
  std::vector<gid_t> groups;  ///< its own first, then the supplementary ones
  uint64_t connection = 0;    ///< a number that no other connection of the server has or had
};

/// Answers lines on a Unix stream socket, one line with one line, and gives lines that nobody has
/// asked for just now to connections that have subscribed to them.
///
/// It has no loop of its own and never blocks: whoever runs one waits for `fd()` to become readable
/// and calls `run()`.
class LineServer {
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
    size_t maxPushed = 1 << 20;
  };
  struct Handlers {
    std::function<bool(SocketPeer const&)> admits;
    /// The answer to a line, with its end. The line is given without it, and is wiped behind.
    std::function<std::string(SocketPeer const&, std::span<uint8_t>)> take;
    /// The answer to what isn't a line, or to a connection that can't be had.
    std::function<std::string(Macsecd::Fault const&)> refuse;
    /// A connection that was admitted has ended.
    std::function<void(SocketPeer const&)> ended = nullptr;
    /// Whether a connection waits to be told something, so that it isn't idle though nobody asks.
    std::function<bool(SocketPeer const&)> isToBeTold = nullptr;
  };
  struct Counts {
    uint64_t refusedUsers = 0;  ///< connections of somebody who isn't admitted
    uint64_t turnedAway = 0;    ///< connections beyond the most
    uint64_t madeRoom = 0;      ///< connections ended so that another could be had
    uint64_t slowReaders = 0;   ///< connections ended because nobody read the answers
    uint64_t brokenLines = 0;   ///< too long, or ended by the end of the connection
    friend bool operator==(Counts const&, Counts const&) = default;
  };

  LineServer(Handlers handlers, Options options);
  ~LineServer();
  LineServer(LineServer const&) = delete;
  LineServer& operator=(LineServer const&) = delete;

  /// Opens the socket at this path, with these permissions of its file. Returns what is wrong and
  /// what to do about it, with the path in front; nothing when all is well.
  [[nodiscard]] std::optional<std::string> listenAt(std::string const& path, mode_t mode);
  /// Readable when there is something to do; the same for as long as the server lives.
  int fd() const { return epoll_.fd(); }
  /// Does what there is to do; returns when it would have to wait.
  void run();

  /// Gives a connection a line, with its end; from anywhere, also while another is answered. One
  /// whose other side doesn't read is ended, soon after this returns.
  void push(uint64_t connection, std::string_view line);

  Counts const& counts() const { return counts_; }
  size_t clients() const { return clients_.size(); }

 private:
  struct Client {
    Client(Descriptor socket, SocketPeer peer) : socket(std::move(socket)), peer(std::move(peer)) {}
    Descriptor const socket;
    SocketPeer const peer;
    LineBuffer lines;
    std::string unread;
    uint64_t lastUsed = 0;  // when it last came up, counted in connections and lines
    bool isEnding = false;  // is shut down, and goes when the kernel says so
  };

  void acceptAll();
  void greet(Descriptor socket);
  bool hasPlaceFor(SocketPeer const& peer);
  Place placeOf(Client const& client) const;
  void end(int fd);
  void turnAway(Descriptor const& socket, Macsecd::Fault const& fault);
  bool watch(int fd);
  void serve(int fd, uint32_t events);
  bool readFrom(Client& client);
  bool takeLines(Client& client);
  bool answer(Client& client, std::string const& text);
  void flush(Client& client);
  void endSoon(Client& client);
  void watchFor(Client const& client);

  Handlers const handlers_;
  Options const options_;
  Descriptor epoll_;
  std::optional<UnixListener> listener_;
  std::map<int, std::unique_ptr<Client>> clients_;
  uint64_t connections_ = 0;  // so far
  uint64_t uses_ = 0;         // connections and lines, so far
  Counts counts_;
};

}  // namespace Linux
