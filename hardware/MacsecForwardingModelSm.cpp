#include "hardware/MacsecForwardingModelSm.h"

#include "runtime/Assert.h"
#include "runtime/Trace.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("MacsecForwardingModelSm");

}  // namespace

struct MacsecForwardingModelSm::StatusReactor final
    : Vesk::Reactor<Status const, MacsecForwardingModelSm, StatusReactor> {
  using Reactor::Reactor;
  void onCpStatus(Lumo::IntfId const& intfId) override;
  void onCpStatusImmediate() override;
  void follow() { owner().cpStatus_.followAll(owner(), notifier()->cpStatus()); }
};

struct MacsecForwardingModelSm::CpStatusReactor final
    : Vesk::Reactor<CpStatus const, MacsecForwardingModelSm, CpStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onControlledPortEnabled() override { owner().updateForwardingModel(fwkKey()); }
};

MacsecForwardingModelSm::MacsecForwardingModelSm(
    Vesk::Ptr<Status const> status,
    Vesk::Ptr<Interface::IntfForwardingModelInputDir> forwardingModelInputDir)
    : status_(Vesk::make<StatusReactor>(*this, std::move(status))),
      forwardingModelInputDir_(std::move(forwardingModelInputDir)) {
  status_->follow();
  handleInitialized();
}

MacsecForwardingModelSm::~MacsecForwardingModelSm() = default;

void MacsecForwardingModelSm::end() {
  Vesk::endReactors(status_);
  cpStatus_.retireAll();
}

Vesk::Ptr<MacsecForwardingModelSm> MacsecForwardingModelSm::MacsecForwardingModelSmIs(
    Vesk::Ptr<Status const> status,
    Vesk::Ptr<Interface::IntfForwardingModelInputDir> forwardingModelInputDir) {
  return Vesk::makeActive<MacsecForwardingModelSm>(std::move(status),
                                                   std::move(forwardingModelInputDir));
}

Vesk::Ptr<MacsecForwardingModelSm> macsecForwardingModelSmFactory(
    Vesk::Ptr<Status const> status,
    Vesk::Ptr<Interface::IntfForwardingModelInputDir> forwardingModelInputDir) {
  return MacsecForwardingModelSm::MacsecForwardingModelSmIs(std::move(status),
                                                            std::move(forwardingModelInputDir));
}

void MacsecForwardingModelSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, status_);
  cpStatus_.hasNotificationActiveIs(active);
}

void MacsecForwardingModelSm::StatusReactor::onCpStatus(Lumo::IntfId const& intfId) {
  owner().cpStatus_.follow(owner(), notifier()->cpStatus(), intfId);
  owner().handleControlledPortStatus(intfId);
}

void MacsecForwardingModelSm::StatusReactor::onCpStatusImmediate() {
  follow();
  owner().handleControlledPortStatus();
}

// The directory is this system's own, and it never writes another value.
Vesk::Ptr<Status const> const& MacsecForwardingModelSm::status() const {
  return status_->notifier();
}

void MacsecForwardingModelSm::handleInitialized() {
  VESK_TRACE(8, "");
  for (auto& entry : forwardingModelInputDir_->forwardingModelInput()) {
    VESK_ASSERT_NAMED(entry.value() == Interface::intfForwardingModelUnauthorized(),
                      "*iter == Interface::intfForwardingModelUnauthorized()");
  }
  releaseLeftovers();
  initialized_ = true;
  handleControlledPortStatus();
}

// What a former run wrote for ports that are no more.
void MacsecForwardingModelSm::releaseLeftovers() {
  for (auto& entry : forwardingModelInputDir_->forwardingModelInput()) {
    Lumo::IntfId const intfId = entry.fwkKey();
    if (status()->cpStatus(intfId)) continue;
    forwardingModelInputDir_->forwardingModelInputDel(intfId);
  }
}

void MacsecForwardingModelSm::handleControlledPortStatus() {
  if (!initialized_) return;
  VESK_TRACE(8, "");
  for (CpStatus& cpStatus : status()->cpStatus()) {
    handleControlledPortStatus(cpStatus.intfId());
  }
}

void MacsecForwardingModelSm::handleControlledPortStatus(Lumo::IntfId intfId) {
  if (!initialized_) return;
  VESK_TRACE(8, " intfId=", intfId);
  updateForwardingModel(intfId);
}

void MacsecForwardingModelSm::updateForwardingModel(Lumo::IntfId intfId) {
  if (!initialized_) return;
  VESK_TRACE(8, " intfId=", intfId);
  auto const cpStatus = status()->cpStatus(intfId);
  if (cpStatus && !cpStatus->controlledPortEnabled()) {
    VESK_TRACE(3, " Making forwarding model for ", intfId.stringValue(), " unauthorized");
    forwardingModelInputDir_->forwardingModelInputIs(intfId,
                                                     Interface::intfForwardingModelUnauthorized());
    return;
  }
  forwardingModelInputDir_->forwardingModelInputDel(intfId);
  VESK_TRACE(3, " Making forwarding model for ", intfId.stringValue(), " authorized");
}

}  // namespace Macsec
