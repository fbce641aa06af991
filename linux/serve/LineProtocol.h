#pragma once

#include "linux/serve/StreamProtocol.h"

namespace Linux {

/// One line is answered with one line.
class LineProtocol final : public StreamProtocol {
 public:
  struct Handlers {
    std::function<bool(SocketPeer const&)> admits;
    /// The answer to a line, with its end. The line is given without it, and is wiped behind.
    std::function<std::string(SocketPeer const&, std::span<uint8_t>)> take;
    /// The answer to what isn't a line, or to a connection that can't be had.
    std::function<std::string(Macsecd::Fault const&)> refuse;
    /// A connection that was admitted has ended.
    std::function<void(SocketPeer const&)> ended = nullptr;
    /// Whether a connection waits to be told something.
    std::function<bool(SocketPeer const&)> isToBeTold = nullptr;
  };

  explicit LineProtocol(Handlers handlers) : handlers_(std::move(handlers)) {}

  bool admits(SocketPeer const& peer) const override { return handlers_.admits(peer); }
  std::unique_ptr<Conversation> begin(SocketPeer const& peer) override;
  std::string refusal(Macsecd::Fault const& fault) const override {
    return handlers_.refuse(fault);
  }
  void ended(SocketPeer const& peer) override {
    if (handlers_.ended) handlers_.ended(peer);
  }
  bool isToBeTold(SocketPeer const& peer) const override {
    return handlers_.isToBeTold && handlers_.isToBeTold(peer);
  }

 private:
  Handlers const handlers_;
};

}  // namespace Linux
