#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "host/PortTrouble.h"
#include "host/TransmitHold.h"
#include "model/Config.h"
#include "model/Status.h"
#include "runtime/TimerWheel.h"

namespace Macsecd {

/// Looks after ports that can't get well by themselves, and binds them to their profile anew:
///
/// - a port that has a live peer, and has been without a principal actor for two life times, or as
///   much longer as its fallback key waits for the primary one: the engine elects only when an
///   actor succeeds;
/// - a port whose only live peer has had another SCI for two life times than the one whose frames
///   it receives;
/// - a port that may not send with its key (`TransmitHold`) and for two life times has got no other
///   one from its key server: it comes back as a new member.
///
/// A port that doesn't get well is left alone for twice as long each time. Apart from that the
/// doctor counts how often the process itself stood still, which looks like the loss of all peers.
class PortDoctor {
 public:
  struct Counts {
    uint64_t boundAnew = 0;
    uint64_t stoodStill = 0;  ///< times that the process ran more than a second late
    double longest = 0;       ///< seconds
  };

  /// `treated` is what it acts on.
  PortDoctor(Vesk::Ptr<Macsec::Config> config, Vesk::Ptr<Macsec::Status const> status,
             Vesk::Ptr<Zorn::TimerWheel> wheel, TransmitHold const& transmitHold,
             PortTroubles treated = allPortTroubles());
  ~PortDoctor();
  PortDoctor(PortDoctor const&) = delete;
  PortDoctor& operator=(PortDoctor const&) = delete;

  Counts const& counts() const { return counts_; }

 private:
  struct Timer;
  struct Case {
    double since = 0;   ///< when the trouble was seen first
    int boundAnew = 0;  ///< how often that has been done for it
  };

  using Cases = std::map<Lumo::IntfId, Case>;

  void round();
  void lookAt(Lumo::IntfId intfId);
  void seemsWell(Cases::iterator known);
  std::optional<PortTrouble> troubleOf(Lumo::IntfId intfId) const;
  double patience(Lumo::IntfId intfId, int boundAnew) const;
  void bindAnew(Lumo::IntfId intfId, PortTrouble trouble);
  double lifeTime() const { return status_->mkaLifeTime(); }

  Vesk::Ptr<Macsec::Config> const config_;
  Vesk::Ptr<Macsec::Status const> const status_;
  TransmitHold const& transmitHold_;
  PortTroubles const treated_;
  Vesk::Ptr<Timer> timer_;
  Cases cases_;
  Counts counts_;
};

}  // namespace Macsecd
