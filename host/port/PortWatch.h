#pragma once

#include <functional>
#include <map>
#include <string>

#include "host/Host.h"
#include "host/port/PortEvent.h"
#include "runtime/Entity.h"

namespace Macsecd {

/// Tells what comes about on the ports of a host, for as long as it lives: each event as the write
/// that it consists of is stored, and before anything that follows from it. Nothing is asked
/// periodically, and what doesn't change costs nothing.
///
/// It lives in the world of the host, which has to outlive it, and no longer than the host goes
/// without `die`.
class PortWatch final : private Vesk::AttributeFollower, private HostTap {
 public:
  /// May neither write to the trees of the host nor end the watch.
  using Tell = std::function<void(PortEvent const&)>;

  PortWatch(Host& host, Tell tell);
  ~PortWatch();
  PortWatch(PortWatch const&) = delete;
  PortWatch& operator=(PortWatch const&) = delete;

 private:
  // What was told last.
  struct Told {
    PortSummary port;
    std::string link = "absent";
    bool waitsForPeer = false;  // somebody is there whose SCI isn't known
  };

  void attributeWritten(Vesk::AttributeWrite const& write) override;
  void framePassed(Lumo::IntfId, FrameWay, std::span<uint8_t const>) override {}
  void hardwareFaultChanged(Lumo::IntfId intfId, std::string const& fault) override;
  void hardwareReportChanged(Lumo::IntfId intfId) override { look(intfId); }

  void peerWritten(Vesk::Entity const* actor);
  void look(Lumo::IntfId intfId);
  void lookAtLink(Lumo::IntfId intfId);
  Told now(Lumo::IntfId intfId) const;

  Host& host_;
  Tell const tell_;
  std::map<Lumo::IntfId, Told> told_;
};

}  // namespace Macsecd
