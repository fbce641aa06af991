#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "linux/serve/StreamServer.h"

namespace Linux {

/// Answers `GET /metrics` of HTTP on a loopback address, one request for each connection.
class MetricsServer final : private StreamProtocol {
 public:
  /// `text` makes what is answered, when it is asked for. The loop lives longer.
  MetricsServer(EventLoop& loop, std::function<std::string()> text);

  /// Listens at "127.0.0.1:9464" or "[::1]:9464"; port 0 is any that is free. A fault says what is
  /// wrong and what to do about it, above all with an address that others could reach.
  Macsecd::Result<> listenAt(std::string const& address);
  /// Where it listens; 0 if it doesn't.
  uint16_t port() const;

 private:
  bool admits(SocketPeer const&) const override { return true; }
  std::unique_ptr<Conversation> begin(SocketPeer const& peer) override;
  // Who is turned away is told nothing: no request has come that this could answer.
  std::string refusal(Macsecd::Fault const&) const override { return {}; }

  std::function<std::string()> const text_;
  StreamServer server_;
};

}  // namespace Linux
