#include "hardware/HwStatusSm.h"

#include "hardware/HwStatusSmReactors.h"
#include "runtime/Trace.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("HwStatus");

}  // namespace

HwStatusSm::HwStatusSm(Vesk::Ptr<MacSecIntfStatusPtrDir> hwStatus,
                       Vesk::Ptr<Vesk::Dir const> hwStatusSliceDir)
    : hwStatus_(std::move(hwStatus)),
      hwStatusSliceDir_(Vesk::make<HwStatusSliceDirReactor>(*this, std::move(hwStatusSliceDir))) {
  doInit();
}

HwStatusSm::~HwStatusSm() = default;

void HwStatusSm::end() {
  Vesk::endReactors(hwStatusSliceDir_);
  hwSlice_.retireAll();
}

Vesk::Ptr<HwStatusSm> HwStatusSm::HwStatusSmIs(Vesk::Ptr<MacSecIntfStatusPtrDir> hwStatus,
                                               Vesk::Ptr<Vesk::Dir const> hwStatusSliceDir) {
  return Vesk::makeActive<HwStatusSm>(std::move(hwStatus), std::move(hwStatusSliceDir));
}

Vesk::Ptr<HwStatusSm> hwStatusSmFactory(Vesk::Ptr<MacSecIntfStatusPtrDir> hwStatus,
                                        Vesk::Ptr<Vesk::Dir const> hwStatusSliceDir) {
  return HwStatusSm::HwStatusSmIs(std::move(hwStatus), std::move(hwStatusSliceDir));
}

void HwStatusSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, hwStatusSliceDir_);
  hwSlice_.hasNotificationActiveIs(active);
}

Vesk::Ptr<Vesk::Dir const> const& HwStatusSm::hwStatusSliceDir() const {
  return hwStatusSliceDir_->notifier();
}

// An entry of the directory that is no `MacSecStatus` counts as absent.
Vesk::Ptr<MacSecStatus> HwStatusSm::slice(Vesk::Name const& name) const {
  return Vesk::ptrCast<MacSecStatus>(hwStatusSliceDir()->entry(name));
}

void HwStatusSm::hwSliceIs(Vesk::Ptr<MacSecStatus> const& slice) {
  hwSlice_.xIs(slice->name(), Vesk::Ptr<MacSecStatus const>(slice),
               [&] { return Vesk::make<HwSliceReactor>(*this, slice); });
}

void HwStatusSm::hwSliceDel(Vesk::Name const& name) {
  hwSlice_.xDel(name, [](HwSliceReactor& slice) { slice.handleSliceStatusDelete(); });
}

void HwStatusSm::doInit() {
  VESK_TRACE(8, "");
  for (auto& entry : hwStatusSliceDir()->entityPtr()) handleSliceDir(entry.fwkKey());
}

void HwStatusSm::handleSliceDir(Vesk::Name const& sliceName) {
  VESK_TRACE(8, ": ", sliceName);
  if (auto entry = slice(sliceName)) {
    hwSliceIs(entry);
    hwSlice_.find(sliceName)->initializedIs(true);
    return;
  }
  for (auto& entry : sliceMap_) {
    if (entry.value() == sliceName) {
      handleSliceStatusDelete(sliceName);
      return;
    }
  }
}

void HwStatusSm::handleSliceStatusDelete(Vesk::Name const& sliceName) {
  VESK_TRACE(8, ": ", sliceName);
  for (auto& entry : sliceMap_) {
    Lumo::IntfId const intfId = entry.fwkKey();
    if (entry.value() != sliceName) continue;
    if (hwStatus_ && hwStatus_->status(intfId)) doUpdateHwStatus(nullptr, sliceName, intfId);
  }
}

void HwStatusSm::doUpdateHwStatus(Vesk::Ptr<MacSecIntfStatus const> const& intfStatus,
                                  Vesk::Name const& sliceName, Lumo::IntfId intfId) {
  if (intfStatus) {
    VESK_TRACE(8, ": ", sliceName, "/", intfId, " added ");
    if (hwStatus_) hwStatus_->statusIs(const_cast<MacSecIntfStatus*>(intfStatus.ptr()));
    sliceMapIs(intfId, sliceName);
  } else {
    VESK_TRACE(8, ": ", sliceName, "/", intfId, " deleted ");
    if (hwStatus_) hwStatus_->statusDel(intfId);
    sliceMapDel(intfId);
  }
  trace();
}

void HwStatusSm::sliceMapIs(Lumo::IntfId intfId, Vesk::String8 const& sliceName) {
  sliceMap_.xIs(intfId, sliceName);
}

void HwStatusSm::sliceMapDel(Lumo::IntfId intfId) { sliceMap_.xDel(intfId); }

void HwStatusSm::trace() const {
  if (!traceHandle.isEnabled(8)) return;
  for (HwSliceReactor& slice : hwSlice_.map()) {
    for (MacSecIntfStatus& intfStatus : slice.notifier()->status()) {
      VESK_TRACE(8, "hwStatusSliceDir/", slice.fwkKey(), " has ", intfStatus.intfId());
    }
  }
}

void HwStatusSm::HwStatusSliceDirReactor::onEntityPtr(Vesk::Name const& name) {
  if (auto entry = owner().slice(name)) {
    owner().hwSliceIs(entry);
  } else {
    owner().hwSliceDel(name);
  }
  owner().handleSliceDir(name);
}

void HwStatusSm::HwStatusSliceDirReactor::onEntityPtrImmediate() {
  for (auto& entry : notifier()->entityPtr()) onEntityPtr(entry.fwkKey());
  for (HwSliceReactor& slice : owner().hwSlice_.map()) {
    if (!owner().slice(slice.fwkKey())) onEntityPtr(slice.fwkKey());
  }
}

HwStatusSm::HwSliceReactor::HwSliceReactor(HwStatusSm& sm, Vesk::Ptr<MacSecStatus const> slice)
    : Reactor(sm, std::move(slice)) {
  intfHwStatus_.followAll(*this, notifier()->status());
}

void HwStatusSm::HwSliceReactor::onStatus(Lumo::IntfId const& intfId) {
  if (!notifier()->status(intfId)) return intfHwStatusDel(intfId);
  intfHwStatus_.follow(*this, notifier()->status(), intfId);
  handleIntfStatus(intfId);
}

void HwStatusSm::HwSliceReactor::onStatusImmediate() {
  for (MacSecIntfStatus& member : notifier()->status()) onStatus(member.intfId());
  for (IntfHwStatusReactor& nested : intfHwStatus_.map()) {
    if (!notifier()->status(nested.fwkKey())) intfHwStatusDel(nested.fwkKey());
  }
}

// The handler runs twice; the second run finds nothing left to delete.
void HwStatusSm::HwSliceReactor::intfHwStatusDel(Lumo::IntfId intfId) {
  intfHwStatus_.xDel(intfId, [&](IntfHwStatusReactor& nested) {
    handleIntfStatus(intfId);
    nested.handleIntfStatusDelete();
  });
}

void HwStatusSm::HwSliceReactor::initializedIs(bool initialized) {
  if (initialized == initialized_) return;
  initialized_ = initialized;
  if (initialized) handleInitialized();
}

void HwStatusSm::HwSliceReactor::handleInitialized() {
  VESK_TRACE(8, ": ", fwkKey());
  for (IntfHwStatusReactor& nested : intfHwStatus_.map()) handleIntfStatus(nested.fwkKey());
}

void HwStatusSm::HwSliceReactor::handleIntfStatus(Lumo::IntfId intfId) {
  if (!initialized_) return;
  VESK_TRACE(8, ": ", intfId);
  IntfHwStatusReactor* nested = intfHwStatus_.find(intfId);
  owner().doUpdateHwStatus(nested ? nested->notifier() : nullptr, fwkKey(), intfId);
}

void HwStatusSm::HwSliceReactor::handleSliceStatusDelete() {
  VESK_TRACE(8, ": ", fwkKey(), " deleted");
  owner().handleSliceStatusDelete(fwkKey());
}

void HwStatusSm::HwSliceReactor::IntfHwStatusReactor::handleIntfStatusDelete() {
  VESK_TRACE(8, ": ", fwkKey());
  owner().handleIntfStatus(fwkKey());
}

}  // namespace Macsec
