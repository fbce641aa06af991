#include "hardware/HwEmulator.h"

#include "runtime/Trace.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::HwEmulator");

}  // namespace

struct HwEmulator::StatusReactor final : Vesk::Reactor<Status const, HwEmulator, StatusReactor> {
  struct CpStatusReactor;

  StatusReactor(HwEmulator& emulator, Vesk::Ptr<Status const> status);
  void hasNotificationActiveIs(bool active) override;
  void onCpStatus(Lumo::IntfId const& intfId) override;
  void onCpStatusImmediate() override;
  void follow();
  void retireAll();

 private:
  void cpStatusIs(Vesk::Ptr<CpStatus const> const& member);

  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus_;
};

struct HwEmulator::StatusReactor::CpStatusReactor final
    : Vesk::Reactor<CpStatus const, HwEmulator, CpStatusReactor> {
  CpStatusReactor(HwEmulator& emulator, Vesk::Ptr<CpStatus const> cpStatus);
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onTxSak() override { updateTxSaStatus(); }
  void onRxSak(AssociationNumber const& an) override { updateRxSaStatus(an); }
  void onRxSakImmediate() override { updateRxSaStatus(); }

  void updateRxSaStatus();
  void updateRxSaStatus(AssociationNumber an);
  void updateTxSaStatus();
};

HwEmulator::HwEmulator(Vesk::Ptr<Status const> status, Vesk::Ptr<MacSecIntfStatusPtrDir> allMacsec)
    : status_(Vesk::make<StatusReactor>(*this, std::move(status))),
      allMacsec_(std::move(allMacsec)) {
  status_->follow();
  handleInitialized();
}

HwEmulator::~HwEmulator() = default;

void HwEmulator::end() {
  status_->retireAll();
  Vesk::endReactors(status_);
}

Vesk::Ptr<HwEmulator> HwEmulator::HwEmulatorIs(Vesk::Ptr<Status const> status,
                                               Vesk::Ptr<MacSecIntfStatusPtrDir> allMacsec) {
  return Vesk::makeActive<HwEmulator>(std::move(status), std::move(allMacsec));
}

Vesk::Ptr<HwEmulator> hwEmulatorFactory(Vesk::Ptr<Status const> status,
                                        Vesk::Ptr<MacSecIntfStatusPtrDir> allMacsec) {
  return HwEmulator::HwEmulatorIs(std::move(status), std::move(allMacsec));
}

void HwEmulator::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, status_);
}

Vesk::Ptr<Status const> const& HwEmulator::status() const { return status_->notifier(); }

void HwEmulator::handleInitialized() {
  VESK_TRACE(8, "");
  initialized_ = true;
}

HwEmulator::StatusReactor::StatusReactor(HwEmulator& emulator, Vesk::Ptr<Status const> status)
    : Reactor(emulator, std::move(status)) {}

void HwEmulator::StatusReactor::hasNotificationActiveIs(bool active) {
  NotifieeConst::hasNotificationActiveIs(active);
  cpStatus_.hasNotificationActiveIs(active);
}

void HwEmulator::StatusReactor::onCpStatus(Lumo::IntfId const& intfId) {
  if (auto member = notifier()->cpStatus(intfId)) {
    cpStatusIs(member);
  } else {
    cpStatus_.xDel(intfId);
  }
}

void HwEmulator::StatusReactor::onCpStatusImmediate() {
  follow();
  for (CpStatusReactor& nested : cpStatus_.map()) {
    if (!notifier()->cpStatus(nested.fwkKey())) cpStatus_.xDel(nested.fwkKey());
  }
}

void HwEmulator::StatusReactor::follow() {
  for (CpStatus& member : notifier()->cpStatus()) cpStatusIs(&member);
}

void HwEmulator::StatusReactor::cpStatusIs(Vesk::Ptr<CpStatus const> const& member) {
  cpStatus_.xIs(member->intfId(), member,
                [&] { return Vesk::make<CpStatusReactor>(owner(), member); });
}

void HwEmulator::StatusReactor::retireAll() { cpStatus_.retireAll(); }

HwEmulator::StatusReactor::CpStatusReactor::CpStatusReactor(HwEmulator& emulator,
                                                            Vesk::Ptr<CpStatus const> cpStatus)
    : Reactor(emulator, std::move(cpStatus)) {
  updateRxSaStatus();
  updateTxSaStatus();
}

void HwEmulator::StatusReactor::CpStatusReactor::updateRxSaStatus() {
  VESK_TRACE(8, "intf: ", fwkKey());
  for (auto& entry : notifier()->rxSak()) updateRxSaStatus(entry.fwkKey());
}

// The removal of a key isn't reflected: its entry stays until the association number is used again.
void HwEmulator::StatusReactor::CpStatusReactor::updateRxSaStatus(AssociationNumber an) {
  VESK_TRACE(8, "intf: ", fwkKey());
  Sak const* const rxSak = notifier()->rxSak(an);
  Sak const sak = rxSak ? *rxSak : Sak();
  if (sak == Sak()) return;
  auto const macsec = owner().allMacsec_->status(fwkKey());
  if (!macsec) return;
  if (macsec->rxSaStatus(an)) macsec->rxSaStatusDel(an);
  macsec->rxSaStatusIs(sak.an(), sak.keyMsgId(), sak.keyNum());
}

void HwEmulator::StatusReactor::CpStatusReactor::updateTxSaStatus() {
  VESK_TRACE(8, "intf: ", fwkKey());
  Sak const txSak = notifier()->txSak();
  if (txSak == Sak()) return;
  auto const macsec = owner().allMacsec_->status(fwkKey());
  if (!macsec) return;
  macsec->txSaStatusIs(txSak.an(), txSak.keyMsgId(), txSak.keyNum());
}

}  // namespace Macsec
