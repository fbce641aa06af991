#pragma once

#include "hardware/HwStatusSm.h"

namespace Macsec {

struct HwStatusSm::HwStatusSliceDirReactor final
    : Vesk::Reactor<Vesk::Dir const, HwStatusSm, HwStatusSliceDirReactor> {
  using Reactor::Reactor;
  void onEntityPtr(Vesk::Name const& name) override;
  void onEntityPtrImmediate() override;
};

struct HwStatusSm::HwSliceReactor final
    : Vesk::Reactor<MacSecStatus const, HwStatusSm, HwSliceReactor> {
  struct IntfHwStatusReactor;

  HwSliceReactor(HwStatusSm& sm, Vesk::Ptr<MacSecStatus const> slice);
  Vesk::Name const& fwkKey() const { return notifier()->name(); }
  void onStatus(Lumo::IntfId const& intfId) override;
  void onStatusImmediate() override;

  bool initialized() const { return initialized_; }
  /// Takes the slice up, once.
  void initializedIs(bool initialized);
  void handleInitialized();
  void handleIntfStatus(Lumo::IntfId intfId);
  void handleSliceStatusDelete();
  auto nested() { return std::tie(intfHwStatus_); }

 private:
  void intfHwStatusDel(Lumo::IntfId intfId);

  bool initialized_ = false;
  Vesk::NestedReactors<IntfHwStatusReactor, Lumo::IntfId> intfHwStatus_;
};

// Watches nothing of its member: it marks that the member is there.
struct HwStatusSm::HwSliceReactor::IntfHwStatusReactor final
    : Vesk::Reactor<MacSecIntfStatus const, HwSliceReactor, IntfHwStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void handleIntfStatusDelete();
};

}  // namespace Macsec
