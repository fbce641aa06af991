#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <unordered_set>
#include <vector>

#include "host/watch/PortChanges.h"
#include "host/watch/PortTrouble.h"
#include "host/watch/TransmitHold.h"
#include "model/Config.h"
#include "model/Status.h"
#include "runtime/TimerWheel.h"

namespace Macsecd {

/// Looks after ports that can't get well by themselves, and binds them to their profile anew:
///
/// - a port that has a live peer and no principal actor: the engine elects only when an actor
///   succeeds;
/// - a port whose only live peer has another SCI than the one whose frames it receives;
/// - an open port without a principal actor whose peer has gone over to another key: what it sends
///   is lost;
/// - a port that may not send with its key (`TransmitHold`) and gets no other one from its key
///   server: it comes back as a new member.
///
/// A key server whose own hardware had the new key later than all its peers isn't bound anew: after
/// a life time the doctor has it look at its peers again, and so go over to the key. Nor is one
/// that leads under its primary key, and uses another one: the doctor has it elect again.
///
/// It does no harm: it never binds a port anew through which traffic passes both ways, nor one
/// whose peers are live under a key that isn't configured any more, since that key would be lost.
/// It waits for two life times beyond the longest wait that this end or the other one may be in by
/// the rules, and begins to wait again whenever the members or their roles change. A port that
/// doesn't get well is left alone for twice as long each time. A port that is well is looked at
/// again when something of it has changed (`PortChanges`), and when its key is held back. Apart
/// from that the doctor counts how often the process itself stood still, which looks like the loss
/// of all peers.
class PortDoctor final : public Vesk::StateMachine, private PortListener {
 public:
  struct Counts {
    uint64_t boundAnew = 0;
    uint64_t stoodStill = 0;  ///< times that the process ran more than a second late
    double longest = 0;       ///< seconds
  };
  /// Whether traffic may pass on an interface.
  using IsOpen = std::function<bool(Lumo::IntfId)>;

  /// `treated` is what it acts on. `ports` and `transmitHold` live longer.
  PortDoctor(Vesk::Ptr<Macsec::Config> config, PortChanges& ports,
             Vesk::Ptr<Zorn::TimerWheel> wheel, TransmitHold const& transmitHold, IsOpen isOpen,
             PortTroubles treated = allPortTroubles());

  Counts const& counts() const { return counts_; }

 private:
  struct Timer;
  // What a wait of an end begins anew with: the live peers, each with its key, and whether this end
  // leads there.
  using Members = std::set<std::tuple<Vesk::String8, Vesk::String8, bool>>;
  struct Case {
    std::optional<PortTrouble> trouble = std::nullopt;
    Members members = {};
    double since = 0;   ///< when the trouble was seen first, with these members
    int boundAnew = 0;  ///< how often that has been done for it
  };

  using Cases = std::map<Lumo::IntfId, Case>;

  void end() override;
  void portChanged(Lumo::IntfId intfId) override { toLookAt_.insert(intfId); }
  void portStepped(Lumo::IntfId intfId) override { toLookAt_.insert(intfId); }
  static Members membersOf(Macsec::MkaPortStatus const& port);
  static bool mayWaitForPrimaryKey(Macsec::MkaPortStatus const& port);
  void round();
  std::vector<Lumo::IntfId> portsOfRound();
  void lookAt(Lumo::IntfId intfId);
  bool isWell(Lumo::IntfId intfId) const;
  void seemsWell(Cases::iterator known);
  std::optional<PortTrouble> troubleOf(Lumo::IntfId intfId) const;
  static std::optional<PortTrouble> troubleOfOpen(Macsec::MkaPortStatus const& port,
                                                  Macsec::Sak const& sak);
  std::optional<PortTrouble> troubleWith(Macsec::MkaActorStatus const& principal,
                                         Lumo::IntfId intfId) const;
  static bool hasMissedItsMoment(Macsec::MkaActorStatus const& principal,
                                 Macsec::CpStatus const& cpStatus);
  void goOver(Lumo::IntfId intfId);
  Vesk::Ptr<Macsec::MkaActorStatus> overlookedKey(Lumo::IntfId intfId) const;
  void electAgain(Lumo::IntfId intfId);
  bool livesOnFormerKey(Lumo::IntfId intfId, Macsec::MkaPortStatus const& port) const;
  double legalWait(Lumo::IntfId intfId, PortTrouble trouble) const;
  double patience(Lumo::IntfId intfId, Case const& thisCase) const;
  void bindAnew(Lumo::IntfId intfId, PortTrouble trouble);
  double lifeTime() const { return status_->mkaLifeTime(); }

  Vesk::Ptr<Macsec::Config> const config_;
  PortChanges& ports_;
  Vesk::Ptr<Macsec::Status const> const status_;
  TransmitHold const& transmitHold_;
  IsOpen const isOpen_;
  PortTroubles const treated_;
  Vesk::Ptr<Timer> timer_;
  Cases cases_;
  std::unordered_set<Lumo::IntfId> toLookAt_;
  Counts counts_;
};

}  // namespace Macsecd
