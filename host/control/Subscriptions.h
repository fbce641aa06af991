#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "host/port/PortWatch.h"
#include "host/watch/HostTap.h"

namespace Macsecd {

/// Who has asked to be told what comes about: connections, by their numbers. While there is none,
/// nothing is watched.
class Subscriptions final : private HostTap {
 public:
  /// Gives a connection a line, without its end. It may not end a subscription.
  using Tell = std::function<void(uint64_t connection, std::string const& line)>;

  Subscriptions(Host& host, Tell tell) : host_(host), tell_(std::move(tell)) {}
  ~Subscriptions();
  Subscriptions(Subscriptions const&) = delete;
  Subscriptions& operator=(Subscriptions const&) = delete;

  /// Whether there is a way to tell anybody.
  bool canTell() const { return tell_ != nullptr; }
  /// The connection wants the events of one interface, or of all.
  void watch(uint64_t connection, std::optional<Lumo::IntfId> intfId);
  /// The connection wants the frames of one interface, of both directions.
  void capture(uint64_t connection, Lumo::IntfId intfId);
  /// The connection wants nothing any more.
  void end(uint64_t connection);
  /// Whether the connection wants anything.
  bool has(uint64_t connection) const {
    return watching_.contains(connection) || capturing_.contains(connection);
  }

 private:
  void framePassed(Lumo::IntfId intfId, FrameWay way, std::span<uint8_t const> frame) override;
  void hardwareFaultChanged(Lumo::IntfId, std::string const&) override {}
  void hardwareReportChanged(Lumo::IntfId) override {}
  void happened(PortEvent const& event);

  Host& host_;
  Tell const tell_;
  std::map<uint64_t, std::optional<Lumo::IntfId>> watching_;
  std::map<uint64_t, Lumo::IntfId> capturing_;
  std::optional<PortWatch> watch_;
};

}  // namespace Macsecd
