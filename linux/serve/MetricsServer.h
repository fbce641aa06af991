#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "linux/process/Descriptor.h"

namespace Linux {

/// Answers `GET /metrics` of HTTP on a loopback address, one request for each connection.
///
/// It has no loop of its own and never blocks: whoever runs one waits for `fd()` to become readable
/// and calls `run()`.
class MetricsServer {
 public:
  static constexpr size_t kMaxConnections = 8;  ///< a further one takes the place of the oldest
  static constexpr size_t kMaxRequest = 8192;   ///< octets

  /// `text` makes what is answered, when it is asked for.
  explicit MetricsServer(std::function<std::string()> text);
  ~MetricsServer();
  MetricsServer(MetricsServer const&) = delete;
  MetricsServer& operator=(MetricsServer const&) = delete;

  /// Listens at "127.0.0.1:9464" or "[::1]:9464"; port 0 is any that is free. Returns what is wrong
  /// and what to do about it, above all with an address that others could reach.
  [[nodiscard]] std::optional<std::string> listenAt(std::string const& address);
  /// Where it listens; 0 if it doesn't.
  uint16_t port() const;
  int fd() const { return epoll_.fd(); }
  void run();

 private:
  struct Connection {
    Descriptor socket;
    std::string request;
    std::string answer;  // what is still to be sent; empty as long as it isn't known
  };
  using Connections = std::map<uint64_t, Connection>;

  bool watch(uint64_t number, int fd);
  void accept();
  bool serve(uint64_t number, Connection& connection);
  bool read(Connection& connection);
  static bool write(Connection& connection);
  std::string answerTo(std::string const& request) const;

  std::function<std::string()> const text_;
  Descriptor epoll_;
  Descriptor listener_;
  Connections connections_;  // the oldest first
  uint64_t accepted_ = 0;
};

}  // namespace Linux
