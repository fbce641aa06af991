#pragma once

#include <string>

#include "lab/world/Simulation.h"

namespace Lab {

/// Whether something that a scenario expects is so, and what is.
struct Finding {
  bool holds;
  std::string is;
};

/// What the switches show now of everything that can be expected but syslog lines.
class Findings {
 public:
  explicit Findings(Simulation const& simulation) : simulation_(simulation) {}

  Finding of(PortIs const& expected) const;
  /// The same, of a state that the port is in: "open", "closed" or "absent".
  static Finding of(PortIs const& expected, std::string const& state);
  Finding of(UsesKey const& expected) const;
  Finding of(UsesDerivedKey const& expected) const;
  Finding of(HasPrimaryKey const& expected) const;
  Finding of(HasKeyServer const& expected) const;
  Finding of(HasLivePeers const& expected) const;
  Finding of(HasForwardingEntry const& expected) const;
  Finding of(HasSakTransmit const& expected) const;
  Finding of(HasSak const& expected) const;
  Finding of(SameSak const& expected) const;
  Finding of(HasRotated const& expected) const;
  Finding of(HasCounted const& expected) const;
  Finding of(Explains const& expected) const;
  Finding of(HasPeerPacketNumber const& expected) const;

  Finding of(HasExited const& expected) const;
  Finding of(IsRunning const& expected) const;
  Finding of(HasFipsMode const& expected) const;
  Finding of(HasDelayProtection const& expected) const;
  Finding of(HasMkpduPeriod const& expected) const;
  Finding of(HasMkpduThreshold const& expected) const;
  Finding of(HasWrittenNothing const& expected) const;
  Finding of(HasReloadDiagnostics const& expected) const;
  Finding of(HasReloadDiagnostic const& expected) const;

 private:
  Macsec::Status const& statusOf(std::string const& switchName) const;
  SwitchRecord const& recordOf(std::string const& switchName) const;
  Vesk::Ptr<Macsec::MkaActorStatus> actorOf(PortName const& port,
                                            std::optional<std::string> const& ckn) const;
  Macsec::Sak sakOf(PortName const& port) const;
  std::string switchOf(Macsec::Sci const& sci) const;

  Simulation const& simulation_;
};

/// The switch that an expectation is about.
std::string const& switchNameOf(Expectation const& expectation);

}  // namespace Lab
