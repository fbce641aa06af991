#pragma once

#include "engine/MkaSm.h"

namespace Macsec {

/// The top of the key agreement engine: has an `MkaSm` exist exactly while `Status::macsecEnabled`
/// is true.
class MkaRootSm final : public Vesk::StateMachine {
 public:
  MkaRootSm(Vesk::Ptr<Status> status, Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
            Vesk::Ptr<MkaPamManager> pamManager, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
            Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  ~MkaRootSm() override;
  static Vesk::Ptr<MkaRootSm> MkaRootSmIs(
      Vesk::Ptr<Status> status, Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
      Vesk::Ptr<MkaPamManager> pamManager, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
      Vesk::Ptr<Zorn::TimerWheel> timerWheel);
  void hasNotificationActiveIs(bool active) override;

  Vesk::Ptr<Status> const& status() const;
  Vesk::Ptr<Interface::EthIntfStatusDir const> const& ethIntfStatusDir() const {
    return ethIntfStatusDir_;
  }
  Vesk::Ptr<MkaPamManager> const& pamManager() const { return pamManager_; }
  Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus() const { return hwStatus_; }
  Vesk::Ptr<Zorn::TimerWheel> const& timerWheel() const { return timerWheel_; }
  Vesk::Ptr<MkaSm> const& mkaSm() const { return mkaSm_; }
  /// The one that there is, or a new one of these.
  Vesk::Ptr<MkaSm> mkaSmIs(Vesk::Ptr<Status> const& status,
                           Vesk::Ptr<Interface::EthIntfStatusDir const> const& ethIntfStatusDir,
                           Vesk::Ptr<MkaPamManager> const& pamManager,
                           Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
                           Vesk::Ptr<Zorn::TimerWheel> const& timerWheel);
  void mkaSmDel() { Vesk::childDel(mkaSm_); }
  bool initialized() const { return initialized_; }

  void handleInitialized();
  void handleMacsecEnabled();

 protected:
  void end() override;

 private:
  struct StatusReactor;

  Vesk::Ptr<StatusReactor> status_;
  Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir_;
  Vesk::Ptr<MkaPamManager> pamManager_;
  Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus_;
  Vesk::Ptr<Zorn::TimerWheel> timerWheel_;
  Vesk::Ptr<MkaSm> mkaSm_;
  bool initialized_ = false;
};

/// Builds the state machine with its notification on.
Vesk::Ptr<MkaRootSm> mkaRootSmFactory(Vesk::Ptr<Status> status,
                                      Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                                      Vesk::Ptr<MkaPamManager> pamManager,
                                      Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                      Vesk::Ptr<Zorn::TimerWheel> timerWheel);

}  // namespace Macsec
