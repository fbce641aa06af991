#pragma once

#include "model/MacSecStatus.h"
#include "model/Status.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// Stands in for the MACsec data path where there is none: answers in `MacSecIntfStatus` what the
/// controlled port asks in `CpStatus`, at once. It moves no frames and holds no keys, never deletes
/// what it has reported, and answers for the interfaces that the directory has.
class HwEmulator final : public Vesk::StateMachine {
 public:
  HwEmulator(Vesk::Ptr<Status const> status, Vesk::Ptr<MacSecIntfStatusPtrDir> allMacsec);
  ~HwEmulator() override;
  static Vesk::Ptr<HwEmulator> HwEmulatorIs(Vesk::Ptr<Status const> status,
                                            Vesk::Ptr<MacSecIntfStatusPtrDir> allMacsec);
  void hasNotificationActiveIs(bool active) override;

  Vesk::Ptr<Status const> const& status() const;
  Vesk::Ptr<MacSecIntfStatusPtrDir> const& allMacsec() const { return allMacsec_; }
  bool initialized() const { return initialized_; }
  void handleInitialized();

 protected:
  void end() override;

 private:
  struct StatusReactor;

  Vesk::Ptr<StatusReactor> status_;
  Vesk::Ptr<MacSecIntfStatusPtrDir> allMacsec_;
  bool initialized_ = false;
};

/// Builds the emulator with its notification on.
Vesk::Ptr<HwEmulator> hwEmulatorFactory(Vesk::Ptr<Status const> status,
                                        Vesk::Ptr<MacSecIntfStatusPtrDir> allMacsec);

}  // namespace Macsec
