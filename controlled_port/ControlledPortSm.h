#pragma once

#include "model/MacSecStatus.h"
#include "model/Status.h"
#include "runtime/Reactor.h"
#include "runtime/TimerWheel.h"

namespace Macsec {

/// Takes a key from `MkaActorStatus::distSak` through the stages that keep traffic flowing during
/// a change of key, by asking through `CpStatus` and hearing the hardware through
/// `MacSecIntfStatus`. One exists for an actor while it is principal.
///
///               new distSak         hardware: receive SA          sakTransmit, or timer
///     +-------+ -----------> +--------------+ --------> +------+ ----------> +--------------+
///     | Empty |              | RxProgrammed |           | RxUp |             | TxProgrammed |
///     +-------+ <----------- +--------------+ <-------- +------+ <---------- +--------------+
///       ^         a newer key takes the place of one that was never used       |
///       |                                                                      | hardware:
///       |  old key empty, or retirement timer                                  v transmit SA
///     +-----+ <------------------------------------------------------------ +------+
///     | Old |                                                               | TxUp |
///     +-----+ --> Retired, when the next key gets there                     +------+
///
/// The first stages lie in `latestSakContext`. The key in steady use lies in `oldSakContext`, and
/// the latest context is empty until the next key comes.
class ControlledPortSm final : public Vesk::StateMachine {
 public:
  ControlledPortSm(Vesk::String8 ckn, Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                   Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                   Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  ControlledPortSm(Vesk::Unstarted, Vesk::String8 ckn, Lumo::IntfId intfId,
                   Vesk::Ptr<Status> status, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                   Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  ~ControlledPortSm() override;
  static Vesk::Ptr<ControlledPortSm> ControlledPortSmIs(
      Vesk::String8 ckn, Lumo::IntfId intfId, Vesk::Ptr<Status> status,
      Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus, Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  void hasNotificationActiveIs(bool active) override;

  Vesk::String8 const& ckn() const { return ckn_; }
  Lumo::IntfId intfId() const { return intfId_; }
  Vesk::Ptr<Status> const& status() const { return status_; }
  Vesk::Ptr<MkaActorStatus const> const& actorStatus() const;
  Vesk::Ptr<CpStatus> const& cpStatus() const { return cpStatus_; }
  Vesk::Ptr<MkaPortStatus const> const& portStatus() const { return portStatus_; }
  Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus() const;
  Vesk::Ptr<Zorn::TimerWheel> const& timerWheel() const { return timerWheel_; }
  bool initialized() const { return initialized_; }
  /// Whether it was made with these arguments.
  bool isFor(Vesk::String8 const& ckn, Lumo::IntfId intfId, Vesk::Ptr<Status> const& status,
             Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
             Vesk::Ptr<Zorn::TimerWheel> const& timerWheel) const;
  Zorn::TimerWheel::NotifieeConst const& latestKeyTxEnableTimer() const;
  Zorn::TimerWheel::NotifieeConst const& oldKeyRetirementTimer() const;
  /// How many entries of the hardware directory it follows.
  size_t followedInterfaces() const;

  void handleInitialized();
  void handleDistSak();
  void handleSakTransmit();
  void handleKeysLPN();
  void handleLivePeer();
  void handleLivePeer(Vesk::String8 const& peer);
  /// The timer's handler, and the direct step of several paths.
  void handleLatestKeyTxEnable();
  void handleOldKeyRetirement();

 protected:
  void end() override;

 private:
  struct ActorStatusReactor;
  struct LatestKeyTxEnableTimerReactor;
  struct OldKeyRetirementTimerReactor;
  struct HwStatusReactor;

  void cleanupLatestSakContext();
  void askForReceive(Sak const& sak);
  void handleReceiveUp();

  Vesk::String8 const ckn_;
  Lumo::IntfId const intfId_;
  Vesk::Ptr<Status> status_;
  Vesk::Ptr<ActorStatusReactor> actorStatus_;
  Vesk::Ptr<CpStatus> cpStatus_;
  Vesk::Ptr<MkaPortStatus const> portStatus_;
  Vesk::Ptr<LatestKeyTxEnableTimerReactor> latestKeyTxEnableTimer_;
  Vesk::Ptr<OldKeyRetirementTimerReactor> oldKeyRetirementTimer_;
  Vesk::Ptr<HwStatusReactor> hwStatus_;
  Vesk::Ptr<Zorn::TimerWheel> timerWheel_;
  bool initialized_ = false;
};

/// Builds the state machine with its notification on.
Vesk::Ptr<ControlledPortSm> controlledPortSmFactory(
    Vesk::String8 ckn, Lumo::IntfId intfId, Vesk::Ptr<Status> status,
    Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus, Vesk::Ptr<Zorn::TimerWheel> timerWheel);

}  // namespace Macsec
