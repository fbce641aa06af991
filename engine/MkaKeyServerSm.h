#pragma once

#include "model/Status.h"
#include "runtime/Reactor.h"
#include "runtime/TimerWheel.h"

namespace Macsec {

/// Decides when a new SAK is needed in one connectivity association, and makes it. It exists while
/// its actor is principal, key server or not. The guard bounds the rate: one key in an MKA
/// lifetime.
///
///     +----------------+  first live peer: generate   +-----------------------+
///     | Guard disarmed | ---------------------------> | Guard armed           |
///     +----------------+ <--------------------------- +-----------------------+
///             ^            expiry, nothing wanted       |  ^ expiry with peers:
///             |                         peers change:   |  | generate
///             |                         newSak          v  |
///             |  expiry without peers                 +-----------------------+
///             +-------------------------------------- | Guard armed, newSak   |
///                                                     +-----------------------+
///
/// The rekey period and the exhaustion of packet numbers make a key without asking the guard.
class MkaKeyServerSm final : public Vesk::StateMachine {
 public:
  /// The two wheels drive the guard and the rekey timer.
  MkaKeyServerSm(Lumo::IntfId intfId, Vesk::String8 ckn, Vesk::Ptr<Status> status,
                 Vesk::Ptr<Zorn::TimerWheel> mkaPeriodicTimer,
                 Vesk::Ptr<Zorn::TimerWheel> reKeyTimer);
  MkaKeyServerSm(Vesk::Unstarted, Lumo::IntfId intfId, Vesk::String8 ckn, Vesk::Ptr<Status> status,
                 Vesk::Ptr<Zorn::TimerWheel> mkaPeriodicTimer,
                 Vesk::Ptr<Zorn::TimerWheel> reKeyTimer);
  ~MkaKeyServerSm() override;
  static Vesk::Ptr<MkaKeyServerSm> MkaKeyServerSmIs(Lumo::IntfId intfId, Vesk::String8 ckn,
                                                    Vesk::Ptr<Status> status,
                                                    Vesk::Ptr<Zorn::TimerWheel> mkaPeriodicTimer,
                                                    Vesk::Ptr<Zorn::TimerWheel> reKeyTimer);
  void hasNotificationActiveIs(bool active) override;

  Lumo::IntfId intfId() const { return intfId_; }
  Vesk::String8 const& ckn() const { return ckn_; }
  Vesk::Ptr<Status> const& status() const { return status_; }
  bool initialized() const { return initialized_; }
  /// Whether it was made with these arguments.
  bool isFor(Lumo::IntfId intfId, Vesk::String8 const& ckn, Vesk::Ptr<Status> const& status,
             Vesk::Ptr<Zorn::TimerWheel> const& mkaPeriodicTimer,
             Vesk::Ptr<Zorn::TimerWheel> const& reKeyTimer) const;
  Zorn::TimerWheel::NotifieeConst const& mkaPeriodicTimer() const;
  Zorn::TimerWheel::NotifieeConst const& reKeyTimer() const;
  Vesk::Ptr<MkaActorStatus> const& mkaActorStatus() const;
  Vesk::Ptr<MkaPortStatus> const& mkaPortStatus() const { return mkaPortStatus_; }
  Vesk::Ptr<IntfStatus const> const& mkaIntfStatus() const;

  void handleInitialized();
  void handleKeyServerChange();
  void handleLivePeer(Vesk::String8 const& peer);
  void handleLlpnExhaustion();
  void handleReKeyPeriod();
  void handleMkaLifetimeTimerExpiry();
  void handleReKeyTimerExpiry();
  void generateNewSak();

 protected:
  void end() override;

 private:
  struct MkaPeriodicTimerReactor;
  struct ReKeyTimerReactor;
  struct MkaActorStatusReactor;
  struct MkaIntfStatusReactor;

  bool isGuardArmed() const;
  void armGuard();
  void disarmGuard();
  void armReKey();
  void withdrawUnusedSak();
  void generateAndArmGuard();
  Vesk::String8 sakContext(uint32_t keyNum) const;

  Lumo::IntfId const intfId_;
  Vesk::String8 const ckn_;
  Vesk::Ptr<Status> status_;
  Vesk::Ptr<MkaPeriodicTimerReactor> mkaPeriodicTimer_;
  Vesk::Ptr<ReKeyTimerReactor> reKeyTimer_;
  Vesk::Ptr<MkaActorStatusReactor> mkaActorStatus_;
  Vesk::Ptr<MkaPortStatus> mkaPortStatus_;
  Vesk::Ptr<MkaIntfStatusReactor> mkaIntfStatus_;
  bool initialized_ = false;
};

/// Builds the state machine with its notification on.
Vesk::Ptr<MkaKeyServerSm> mkaKeyServerSmFactory(Lumo::IntfId intfId, Vesk::String8 ckn,
                                                Vesk::Ptr<Status> status,
                                                Vesk::Ptr<Zorn::TimerWheel> mkaPeriodicTimer,
                                                Vesk::Ptr<Zorn::TimerWheel> reKeyTimer);

}  // namespace Macsec
