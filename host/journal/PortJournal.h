#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "host/Host.h"
#include "host/journal/TellingRate.h"
#include "host/port/PortWatch.h"
#include "host/watch/HostTap.h"

namespace Macsecd {

/// Tells the life of the ports in the log: open, closed and why, link up and down, the device made,
/// made anew, gone. It looks when all of a moment has come about, so that what passes within it is
/// not told, and a cause is the one that stays. A port that changes all the time is told of at most
/// `TellingRate::kMost` times a minute, and as it stands at the end of that.
///
/// It lives as a `PortWatch` does.
class PortJournal final : public HostCompanion, private HostTap {
 public:
  /// Begins with what the ports are now: those that are open are told, and those that the tree has
  /// as open and that aren't.
  explicit PortJournal(Host& host);
  /// For `HostOptions::companion`.
  static std::unique_ptr<HostCompanion> of(Host& host) {
    return std::make_unique<PortJournal>(host);
  }
  ~PortJournal() override;
  PortJournal(PortJournal const&) = delete;
  PortJournal& operator=(PortJournal const&) = delete;

 private:
  struct Timer;
  // What was told last of a port.
  struct Told {
    bool wasOpen = false;  // in the tree that the journal began with
    std::optional<bool> isOpen = {};
    std::string link = "absent";
    std::string device = {};
    uint32_t devicesMade = 0;
    TellingRate rate = {};
    bool isUnsteady = false;  // and that this is so
  };

  void framePassed(Lumo::IntfId, FrameWay, std::span<uint8_t const>) override {}
  void hardwareFaultChanged(Lumo::IntfId, std::string const&) override {}
  void hardwareReportChanged(Lumo::IntfId intfId) override { lookSoon(intfId); }

  void begin();
  void lookSoon(Lumo::IntfId intfId);
  void handleTime();
  // Each of these returns whether all that there was has been told.
  bool look(Lumo::IntfId intfId);
  bool tellLink(Lumo::IntfId intfId, Told& told);
  bool tellDevice(Lumo::IntfId intfId, Told& told);
  bool tellState(Lumo::IntfId intfId, Told& told);
  static bool mayTell(Lumo::IntfId intfId, Told& told);

  Host& host_;
  std::map<Lumo::IntfId, Told> told_;
  std::set<Lumo::IntfId> changed_;
  Vesk::Ptr<Timer> timer_;
  PortWatch watch_;
};

}  // namespace Macsecd
