#include "controlled_port/ControlledPortSmReactors.h"
#include "runtime/Exceptions.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

// The ear of the controlled port: what the hardware reports takes the rotation to its next stage.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::ControlledPortSm");

Vesk::LogHandle const MKA_SAK_ACTIVATED(
    "MKA_SAK_ACTIVATED", Vesk::LogSeverity::informational,
    "Activated SAK with key id ending in %s:%s on interface %s",
    "SAK activated, all data packets henceforth will be encrypted with this SAK",
    Vesk::NoActionRequired, 120.0, 1.0);

// From here on a member identifier is shown in messages: its last 8 digits.
constexpr size_t kShownFrom = 16;

bool isReportOf(Sak const& sak, SaStatus const& saStatus) {
  return saStatus.associationNumber() == sak.an() && saStatus.keyId() == sak.keyMsgId() &&
         saStatus.keyNum() == sak.keyNum();
}

}  // namespace

ControlledPortSm::HwStatusReactor::HwStatusReactor(ControlledPortSm& sm,
                                                   Vesk::Ptr<MacSecIntfStatusPtrDir const> dir)
    : Reactor(sm, std::move(dir), sm.intfId()) {
  if (Vesk::world().switches().visitsAreFiltered) {
    macsecIntfStatusReactor(sm.intfId());
  } else {
    followAll();
  }
}

bool ControlledPortSm::HwStatusReactor::isFollowed(Lumo::IntfId intfId) const {
  return !Vesk::world().switches().visitsAreFiltered || intfId == owner().intfId() ||
         macsecIntfStatus_.find(intfId);
}

void ControlledPortSm::HwStatusReactor::onStatus(Lumo::IntfId const& intfId) {
  if (auto member = notifier()->status(intfId)) {
    if (isFollowed(intfId)) macsecIntfStatusIs(member);
  } else {
    macsecIntfStatus_.xDel(intfId);
  }
}

void ControlledPortSm::HwStatusReactor::onStatusImmediate() {
  followAll();
  for (auto& nested : macsecIntfStatus_.map()) {
    if (!notifier()->status(nested.fwkKey())) macsecIntfStatus_.xDel(nested.fwkKey());
  }
}

void ControlledPortSm::HwStatusReactor::followAll() {
  for (auto& entry : notifier()->status()) {
    if (isFollowed(entry.fwkKey())) macsecIntfStatusIs(entry.value());
  }
}

Vesk::Ptr<ControlledPortSm::HwStatusReactor::MacsecIntfStatusReactor>
ControlledPortSm::HwStatusReactor::macsecIntfStatusReactor(Lumo::IntfId intfId) {
  if (auto member = notifier()->status(intfId)) macsecIntfStatusIs(member);
  return macsecIntfStatus_.find(intfId);
}

void ControlledPortSm::HwStatusReactor::macsecIntfStatusIs(
    Vesk::Ptr<MacSecIntfStatus const> const& member) {
  if (!member) {
    Vesk::throwRangeException(
        "null _macsecIntfStatus parameter to mutator for "
        "Macsec::ControlledPortSm::HwStatusReactor::macsecIntfStatus not allowed\"");
  }
  macsecIntfStatus_.xIs(member->intfId(), member,
                        [&] { return Vesk::make<MacsecIntfStatusReactor>(owner(), member); });
}

bool ControlledPortSm::HwStatusReactor::MacsecIntfStatusReactor::concernsOwner() const {
  return owner().initialized_ && fwkKey() == owner().intfId_;
}

void ControlledPortSm::HwStatusReactor::MacsecIntfStatusReactor::handleRxSaStatus(
    AssociationNumber an) {
  if (!concernsOwner()) return;
  ControlledPortSm& sm = owner();
  VESK_TRACE(8, ": Actor ", sm.ckn_, " on ", sm.intfId_);
  auto const saStatus = notifier()->rxSaStatus(an);
  if (!saStatus) {
    VESK_TRACE(3, ": Ignoring receive SA being deleted for AN: ", an, " for actor ", sm.ckn_,
               " on ", sm.intfId_);
    return;
  }
  SakContext latest = sm.cpStatus_->latestSakContext();
  if (an != latest.sak().an() || !isReportOf(latest.sak(), *saStatus)) {
    VESK_TRACE(3, ": Ignoring receive SA for AN: ", an,
               " because it doesn't match with the latestSak for ", sm.ckn_, " on ", sm.intfId_);
    return;
  }
  if (latest.rxInstalled()) {
    VESK_TRACE(3, ": Ignoring receive SA for AN: ", an,
               " because the SAK is already installed for RX for ", sm.ckn_, " on ", sm.intfId_);
    return;
  }
  latest.rxInstalledIs(true);
  VESK_TRACE(1, ": Starting receive on key: ", latest.sak().keyMsgId(), ":", latest.sak().keyNum(),
             " for actor ", sm.ckn_, " on ", sm.intfId_);
  sm.cpStatus_->latestSakContextIs(latest);
  sm.handleReceiveUp();
}

// A peer waits for the key server; the key server waits for its peers, unless the port is closed.
void ControlledPortSm::handleReceiveUp() {
  if (!actorStatus()->electedSelf()) return;
  if (!cpStatus_->controlledPortEnabled()) {
    handleLatestKeyTxEnable();
    return;
  }
  Sak const& distSak = actorStatus()->distSak();
  VESK_TRACE(3, ": Starting transmit-enable timer for key:", distSak.keyMsgId(), ":",
             distSak.keyNum(), " for actor ", ckn_, " on ", intfId_);
  latestKeyTxEnableTimer_->timeMinIs(Vesk::now() + status_->latestKeyEnablePeriod());
}

void ControlledPortSm::HwStatusReactor::MacsecIntfStatusReactor::handleTxSaStatus() {
  if (!concernsOwner()) return;
  ControlledPortSm& sm = owner();
  VESK_TRACE(8, ": Actor ", sm.ckn_, " on ", sm.intfId_);
  auto const saStatus = notifier()->txSaStatus();
  if (!saStatus) {
    VESK_TRACE(3, ": Ignoring empty txSaStatus for actor ", sm.ckn_, " on ", sm.intfId_);
    return;
  }
  AssociationNumber const an = saStatus->associationNumber();
  SakContext latest = sm.cpStatus_->latestSakContext();
  if (!isReportOf(latest.sak(), *saStatus)) {
    VESK_TRACE(3, ": Ignoring transmit SA for AN: ", an,
               " because it doesn't match with the latestSak for ", sm.ckn_, " on ", sm.intfId_);
    return;
  }
  latest.lpnIs(saStatus->lpn());
  if (latest.txInstalled()) {
    VESK_TRACE(3, ": Ignoring transmit SA for AN: ", an,
               " because the SAK is already installed for TX for ", sm.ckn_, " on ", sm.intfId_);
    return;
  }
  takeTransmitUp(latest);
}

void ControlledPortSm::HwStatusReactor::MacsecIntfStatusReactor::takeTransmitUp(SakContext latest) {
  ControlledPortSm& sm = owner();
  Sak const sak = latest.sak();
  SakContext old = sm.cpStatus_->oldSakContext();
  latest.txInstalledIs(true);
  Vesk::log(MKA_SAK_ACTIVATED, sak.keyMsgId().from(kShownFrom), sak.keyNum(), sm.intfId_);
  VESK_TRACE(1, ": Starting transmit on key: ", sak.keyMsgId(), ":", sak.keyNum(), " for actor ",
             sm.ckn_, " on ", sm.intfId_);
  sm.cpStatus_->latestSakContextIs(latest);
  old.txInstalledIs(false);
  sm.cpStatus_->oldSakContextIs(old);
  if (sm.cpStatus_->oldSakContext() == SakContext()) {
    sm.handleOldKeyRetirement();
  } else {
    sm.oldKeyRetirementTimer_->timeMinIs(Vesk::now() + sm.status_->oldKeyRetirementPeriod());
  }
  sm.cpStatus_->controlledPortEnabledIs(true);
}

}  // namespace Macsec
