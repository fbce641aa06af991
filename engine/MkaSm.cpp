#include "engine/MkaSm.h"

#include "engine/MkaSmReactors.h"
#include "runtime/Assert.h"
#include "runtime/Trace.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

}  // namespace

void resetCpStatus(CpStatus& cpStatus) {
  cpStatus.oldSakContextIs(SakContext());
  cpStatus.latestSakContextIs(SakContext());
  cpStatus.txSakIs(Sak());
  cpStatus.rxSakDelAll();
  cpStatus.controlledPortEnabledIs(false);
}

MkaSm::MkaSm(Vesk::Unstarted, Vesk::Ptr<Status> status,
             Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
             Vesk::Ptr<MkaPamManager> pamManager, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
             Vesk::Ptr<Zorn::TimerWheel> timerWheel)
    : status_(Vesk::make<StatusReactor>(*this, std::move(status))),
      ethIntfStatusDir_(Vesk::make<EthIntfStatusDirReactor>(*this, std::move(ethIntfStatusDir))),
      pamManager_(std::move(pamManager)),
      hwStatus_(Vesk::make<HwStatusReactor>(*this, std::move(hwStatus))),
      timerWheel_(std::move(timerWheel)) {}

MkaSm::MkaSm(Vesk::Ptr<Status> status,
             Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
             Vesk::Ptr<MkaPamManager> pamManager, Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
             Vesk::Ptr<Zorn::TimerWheel> timerWheel)
    : MkaSm(Vesk::Unstarted(), std::move(status), std::move(ethIntfStatusDir),
            std::move(pamManager), std::move(hwStatus), std::move(timerWheel)) {
  handleInitialized();
}

MkaSm::~MkaSm() = default;

void MkaSm::end() {
  handleCleanUp();
  Vesk::endReactors(status_, ethIntfStatusDir_, hwStatus_);
  mkaPortSmDelAll();
}

Vesk::Ptr<MkaSm> MkaSm::MkaSmIs(Vesk::Ptr<Status> status,
                                Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                                Vesk::Ptr<MkaPamManager> pamManager,
                                Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return Vesk::makeActive<MkaSm>(std::move(status), std::move(ethIntfStatusDir),
                                 std::move(pamManager), std::move(hwStatus), std::move(timerWheel));
}

Vesk::Ptr<MkaSm> mkaSmFactory(Vesk::Ptr<Status> status,
                              Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                              Vesk::Ptr<MkaPamManager> pamManager,
                              Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                              Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return MkaSm::MkaSmIs(std::move(status), std::move(ethIntfStatusDir), std::move(pamManager),
                        std::move(hwStatus), std::move(timerWheel));
}

void MkaSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, status_, ethIntfStatusDir_, hwStatus_);
  for (MkaPortSm& portSm : mkaPortSm_) portSm.hasNotificationActiveIs(active);
}

Vesk::Ptr<Status> const& MkaSm::status() const { return status_->notifier(); }

Vesk::Ptr<Interface::EthIntfStatusDir const> const& MkaSm::ethIntfStatusDir() const {
  return ethIntfStatusDir_->notifier();
}

Vesk::Ptr<MacSecIntfStatusPtrDir const> const& MkaSm::hwStatus() const {
  return hwStatus_->notifier();
}

bool MkaSm::isLinkUp(Lumo::IntfId intfId) const {
  auto ethIntfStatus = ethIntfStatusDir()->intfStatus(intfId);
  return ethIntfStatus && ethIntfStatus->linkStatus() == Interface::linkUp;
}

// Who is told of a step towards a port may have taken back what asks for it.
bool MkaSm::isPortAskedFor(Lumo::IntfId intfId) const {
  return status()->intfStatus(intfId) && status()->portStatus(intfId);
}

Vesk::Ptr<MkaPortSm> MkaSm::mkaPortSmIs(Lumo::IntfId intfId, Vesk::Ptr<Status> const& status,
                                        Vesk::Ptr<MkaPamManager> const& pamManager,
                                        Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
                                        Vesk::Ptr<Zorn::TimerWheel> const& timerWheel) {
  if (auto portSm = mkaPortSm_[intfId]) return portSm;
  return Vesk::childIs(mkaPortSm_, Vesk::make<MkaPortSm>(Vesk::Unstarted(), intfId, status,
                                                         pamManager, hwStatus, timerWheel));
}

void MkaSm::mkaPortSmDel(Lumo::IntfId intfId) { Vesk::childDel(mkaPortSm_, intfId); }

void MkaSm::mkaPortSmDelAll() {
  for (Lumo::IntfId intfId : portSmKeys()) mkaPortSmDel(intfId);
}

// A walk over the collection would hold the state machine that it ends, and put off its clean-up.
std::vector<Lumo::IntfId> MkaSm::portSmKeys() const {
  std::vector<Lumo::IntfId> keys;
  for (MkaPortSm& portSm : mkaPortSm_) keys.push_back(portSm.intfId());
  return keys;
}

void MkaSm::handleInitialized() {
  VESK_TRACE(8, "");
  repairCpStatus();
  repairPortStatus();
  initialized_ = true;
  handleIntfStatus();
}

// What a former run left of an interface that isn't configured any more goes; of one that has no
// link it is emptied; of one whose link is up it is taken up as it is.
void MkaSm::repairCpStatus() {
  for (auto i = status()->cpStatus().iterator(); i; ++i) {
    Lumo::IntfId const intfId = i->intfId();
    if (!status()->intfStatus(intfId)) {
      VESK_TRACE(3, ": Deleting stale cpStatus for intfId ", intfId);
      status()->cpStatusDel(i);
    } else if (!isLinkUp(intfId)) {
      resetCpStatus(*i);
    }
  }
}

void MkaSm::repairPortStatus() {
  for (auto i = status()->portStatus().iterator(); i; ++i) {
    Lumo::IntfId const intfId = i->intfId();
    if (!status()->intfStatus(intfId)) {
      VESK_TRACE(3, ": Deleting stale portStatus for intfId ", intfId);
      status()->portStatusDel(i);
    } else if (!isLinkUp(intfId)) {
      i->actorStatusDelAll();
    }
  }
}

void MkaSm::handleIntfStatus() {
  VESK_TRACE(8, "");
  for (IntfStatus& intfStatus : status()->intfStatus()) handleIntfStatus(intfStatus.intfId());
}

void MkaSm::handleIntfStatus(Lumo::IntfId intfId) {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId);
  createOrDeletePortSm(intfId, !status()->intfStatus(intfId));
}

void MkaSm::handleHwStatus(Lumo::IntfId intfId) {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId);
  bool const inHardware = static_cast<bool>(hwStatus()->status(intfId));
  bool const hasPortStatus = static_cast<bool>(status()->portStatus(intfId));
  if (!status()->intfStatus(intfId)) return;
  if (inHardware && !hasPortStatus) createOrDeletePortSm(intfId, false);
  if (!inHardware && hasPortStatus) createOrDeletePortSm(intfId, true);
}

void MkaSm::createOrDeletePortSm(Lumo::IntfId intfId, bool del) {
  VESK_TRACE(8, ": IntfId ", intfId, " delete: ", del);
  if (del) {
    deletePort(intfId);
    return;
  }
  if (!isLinkUp(intfId)) {
    VESK_TRACE(3, ": Ignoring ", intfId, " because the link is not up.");
    return;
  }
  if (!hwStatus()->status(intfId)) {
    VESK_TRACE(3, ": Ignoring ", intfId,
               " because the interface does not exist in hardware status.");
    return;
  }
  createPort(intfId);
}

void MkaSm::createPort(Lumo::IntfId intfId) {
  ++portsAskedFor_;
  VESK_TRACE(1, ": Creating new port status for ", intfId);
  status()->portStatusIs(intfId);
  if (!isPortAskedFor(intfId)) return;
  VESK_TRACE(1, ": Creating new cpStatus for ", intfId);
  status()->cpStatusIs(intfId, status()->intfStatus(intfId)->macsecParams());
  updateSci(intfId);
  if (mkaPortSm_.find(intfId) || !isPortAskedFor(intfId) || !isLinkUp(intfId)) return;
  VESK_TRACE(1, ": Creating a new portSm for ", intfId);
  VESK_ASSERT(status()->portStatus(intfId) && status()->cpStatus(intfId));
  mkaPortSmIs(intfId, status(), pamManager_, hwStatus(), timerWheel_);
}

void MkaSm::deletePort(Lumo::IntfId intfId) {
  uint64_t const askedFor = portsAskedFor_;
  if (mkaPortSm_.find(intfId)) {
    VESK_TRACE(1, ": Cleaning up portSm for ", intfId);
    mkaPortSmDel(intfId);
  }
  if (status()->portStatus(intfId)) {
    VESK_TRACE(1, ": Deleting portStatus for ", intfId);
    status()->portStatusDel(intfId);
  }
  if (status()->cpStatus(intfId)) {
    VESK_TRACE(1, ": Deleting cpStatus for ", intfId);
    status()->cpStatusDel(intfId);
  }
  bool const isAskedForAgain = portsAskedFor_ != askedFor && status()->intfStatus(intfId);
  if (isAskedForAgain && !isEnding()) createOrDeletePortSm(intfId, false);
}

void MkaSm::updateSci(Lumo::IntfId intfId) {
  VESK_TRACE(8, ": IntfId ", intfId);
  auto portStatus = status()->portStatus(intfId);
  if (!portStatus) {
    VESK_TRACE(3, ": No portStatus found for ", intfId);
    return;
  }
  auto ethIntfStatus = ethIntfStatusDir()->intfStatus(intfId);
  if (!ethIntfStatus) {
    VESK_TRACE(3, ": No ethIntfStatus found for ", intfId);
    return;
  }
  portStatus->mySciIs(Sci(ethIntfStatus->ethAddr(), ethIntfStatus->portNumber()));
  VESK_TRACE(3, ": Updated Sci with mac ", ethIntfStatus->ethAddr(), " and port number ",
             ethIntfStatus->portNumber(), " for ", intfId);
}

void MkaSm::handleCleanUp() {
  VESK_TRACE(8, "");
  if (!status()) return;
  for (Lumo::IntfId intfId : portSmKeys()) createOrDeletePortSm(intfId, true);
}

}  // namespace Macsec
