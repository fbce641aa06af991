#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "host/text/Result.h"
#include "linux/serve/Listener.h"

namespace Linux {

/// One connection's part of a protocol: takes what comes, and answers it.
class Conversation {
 public:
  enum class Verdict {
    goesOn,
    ends,      ///< as soon as its answers are sent
    isBroken,  ///< ends at once: what came is none of the protocol
  };
  /// Sends an answer, now or when it can be. False when the connection ends, because its other side
  /// doesn't read: then nothing more is to be taken.
  using Answer = std::function<bool(std::string_view)>;

  virtual ~Conversation() = default;
  /// Where the next octets go.
  virtual std::span<uint8_t> room() = 0;
  /// So many octets have been put there.
  virtual Verdict take(size_t octets, Answer const& answer) = 0;
  /// None will come any more, and the connection ends.
  virtual Verdict inputEnds(Answer const& answer) = 0;
};

/// What a `StreamServer` speaks.
class StreamProtocol {
 public:
  virtual ~StreamProtocol() = default;
  virtual bool admits(SocketPeer const& peer) const = 0;
  virtual std::unique_ptr<Conversation> begin(SocketPeer const& peer) = 0;
  /// What a connection is told that can't be had.
  virtual std::string refusal(Macsecd::Fault const& fault) const = 0;
  /// A connection that was admitted has ended.
  virtual void ended(SocketPeer const&) {}
  /// Whether a connection waits to be told something, so that it isn't idle though nobody asks.
  virtual bool isToBeTold(SocketPeer const&) const { return false; }
};

}  // namespace Linux
