#pragma once

#include "engine/MkaActorSm.h"
#include "model/MacSecStatus.h"
#include "model/MkaPamManager.h"
#include "model/Status.h"
#include "runtime/Reactor.h"
#include "runtime/TimerWheel.h"

namespace Macsec {

/// The state machine of one port: turns the keys of `IntfStatus` into actors, and decides which of
/// them is principal, that is, may feed the controlled port.
///
///                       distributed SAK, or election with a candidate
///     +--------------+  ---------------------------------------------->  +-----------+
///     | No principal |                                                   | Principal |
///     +--------------+  <----------------------------------------------  +-----------+
///        |      ^         failure with no candidate left, key deleted       ^    |  ^
///        |      |                                                           |    +--+ re-election
///        v      | election finds nobody                                     |
///     +----------------------+   election with a candidate                  |
///     | Waiting for fallback | ---------------------------------------------+
///     +----------------------+
class MkaPortSm final : public Vesk::StateMachine {
 public:
  MkaPortSm(Lumo::IntfId intfId, Vesk::Ptr<Status> status, Vesk::Ptr<MkaPamManager> pamManager,
            Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
            Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  MkaPortSm(Vesk::Unstarted, Lumo::IntfId intfId, Vesk::Ptr<Status> status,
            Vesk::Ptr<MkaPamManager> pamManager, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
            Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  ~MkaPortSm() override;
  static Vesk::Ptr<MkaPortSm> MkaPortSmIs(Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                                          Vesk::Ptr<MkaPamManager> pamManager,
                                          Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                          Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  void hasNotificationActiveIs(bool active) override;

  Lumo::IntfId fwkKey() const { return intfId_; }
  Lumo::IntfId intfId() const { return intfId_; }

  Vesk::Ptr<Status> const& status() const;
  Vesk::Ptr<IntfStatus const> const& intfStatus() const;
  Vesk::Ptr<MkaPortStatus> const& portStatus() const;
  Vesk::Ptr<CpStatus> const& cpStatus() const { return cpStatus_; }
  Vesk::Ptr<MkaPamManager> const& pamManager() const;
  Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus() const;
  Vesk::Ptr<Zorn::TimerWheel> const& timerWheel() const { return timerWheel_; }

  using MkaActorSmMap = Vesk::HashMap<MkaActorSm, Vesk::String8>;
  /// The actors, by CKN.
  MkaActorSmMap const& mkaActorSm() const { return mkaActorSm_; }
  Vesk::Ptr<MkaActorSm> mkaActorSm(Vesk::String8 const& ckn) const { return mkaActorSm_[ckn]; }
  Vesk::Ptr<MkaActorSm> mkaActorSmIs(Vesk::String8 const& ckn, Vesk::String8 const& cak,
                                     Lumo::IntfId intfId, Vesk::Ptr<Status> const& status,
                                     Vesk::Ptr<MkaPamManager> const& pamManager,
                                     Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
                                     Vesk::Ptr<Zorn::TimerWheel> const& timerWheel);
  /// Destroys the state machine of an actor and leaves its `MkaActorStatus` alone.
  void mkaActorSmDel(Vesk::String8 const& ckn);
  void mkaActorSmDelAll();
  /// A state machine has no notifiees: this reaches nobody.
  void mkaActorSmNotify(Vesk::String8 const&) const {}
  /// CKN of the principal actor, or empty: the only memory of the port's choice.
  Vesk::String8 const& principalActorCkn() const { return principalActorCkn_; }
  void principalActorCknIs(Vesk::String8 const& ckn) { principalActorCkn_ = ckn; }
  bool initialized() const { return initialized_; }
  Zorn::TimerWheel::NotifieeConst const& defaultActorTimer() const;
  Zorn::TimerWheel::NotifieeConst const& actorDeletionTimer() const;

  void handleInitialized();
  void handleKey();
  void handleDefaultKey();
  void handleActorDeletion();
  void handleDefaultKeyActivation();
  void doElectPrincipalActor();
  void handleCleanUp();

 protected:
  void end() override;

 private:
  struct StatusReactor;
  struct IntfStatusReactor;
  struct PortStatusReactor;
  struct PamManagerReactor;
  struct HwStatusReactor;
  struct DefaultActorTimerReactor;
  struct ActorDeletionTimerReactor;
  struct Candidates;
  struct Election;

  void takeUpActors();
  bool deleteActorsOfGoneKey(bool defaultActors);
  bool deleteReplacedActor(MkaActorStatus& actor);
  bool isInForce(Cak const& key, bool defaultKey) const;
  bool isHere(MkaActorStatus const& actor) const;
  bool lacksActor(Cak const& key, bool defaultKey) const;
  void createActorStatus(Cak const& key, bool defaultActor);
  void createActor(Cak const& key);
  void deleteActorsOfOlderKeys(Cak const& key, bool defaultActors);
  Candidates candidates() const;
  Vesk::Ptr<MkaActorStatus> pick(Candidates const& from) const;
  Vesk::Ptr<MkaActorStatus> oldPrincipal();
  void cleanUpOldPrincipal(Vesk::Ptr<MkaActorStatus> const& old);
  void mark(MkaActorStatus& chosen, Vesk::String8 const& former);
  void unmark(MkaActorStatus& principal);
  void logKeyInUse(MkaActorStatus const& actor) const;
  void checkPrincipal() const;

  Lumo::IntfId const intfId_;
  Vesk::Ptr<StatusReactor> status_;
  Vesk::Ptr<IntfStatusReactor> intfStatus_;
  Vesk::Ptr<PortStatusReactor> portStatus_;
  Vesk::Ptr<CpStatus> cpStatus_;
  Vesk::Ptr<PamManagerReactor> pamManager_;
  Vesk::Ptr<HwStatusReactor> hwStatus_;
  Vesk::Ptr<Zorn::TimerWheel> timerWheel_;
  Vesk::Ptr<DefaultActorTimerReactor> defaultActorTimer_;
  Vesk::Ptr<ActorDeletionTimerReactor> actorDeletionTimer_;
  MkaActorSmMap mkaActorSm_;
  Vesk::String8 principalActorCkn_;
  unsigned elections_ = 0;  ///< on the stack
  bool initialized_ = false;
};

/// Builds the state machine with its notification on.
Vesk::Ptr<MkaPortSm> mkaPortSmFactory(Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                                      Vesk::Ptr<MkaPamManager> pamManager,
                                      Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                      Vesk::Ptr<Zorn::TimerWheel> timerWheel);

}  // namespace Macsec
