#include "hardware/HwEmulator.h"

#include "runtime/NestedReactors.h"
#include "runtime/Trace.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::HwEmulator");

}  // namespace

struct HwEmulator::StatusReactor final : Vesk::Reactor<Status const, HwEmulator, StatusReactor> {
  struct CpStatusReactor;

  using Reactor::Reactor;
  void onCpStatus(Lumo::IntfId const& intfId) override;
  void onCpStatusImmediate() override { follow(); }
  void follow();
  auto nested() { return std::tie(cpStatus_); }

 private:
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

void HwEmulator::end() { Vesk::endReactors(status_); }

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

void HwEmulator::StatusReactor::onCpStatus(Lumo::IntfId const& intfId) {
  cpStatus_.follow(owner(), notifier()->cpStatus(), intfId);
}

void HwEmulator::StatusReactor::follow() { cpStatus_.followAll(owner(), notifier()->cpStatus()); }

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
