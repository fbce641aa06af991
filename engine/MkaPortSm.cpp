#include "engine/MkaPortSm.h"

#include "engine/MkaPortSmReactors.h"
#include "engine/MkaSm.h"
#include "runtime/Assert.h"
#include "runtime/Trace.h"

// Construction and end of a port, and what stands around its actors.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

}  // namespace

MkaPortSm::MkaPortSm(Vesk::Unstarted, Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                     Vesk::Ptr<MkaPamManager> pamManager,
                     Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                     Vesk::Ptr<Zorn::TimerWheel> timerWheel)
    : intfId_(intfId),
      status_(Vesk::make<StatusReactor>(*this, std::move(status))),
      pamManager_(Vesk::make<PamManagerReactor>(*this, std::move(pamManager))),
      hwStatus_(Vesk::make<HwStatusReactor>(*this, std::move(hwStatus))),
      timerWheel_(std::move(timerWheel)) {}

MkaPortSm::MkaPortSm(Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                     Vesk::Ptr<MkaPamManager> pamManager,
                     Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                     Vesk::Ptr<Zorn::TimerWheel> timerWheel)
    : MkaPortSm(Vesk::Unstarted(), intfId, std::move(status), std::move(pamManager),
                std::move(hwStatus), std::move(timerWheel)) {
  handleInitialized();
}

MkaPortSm::~MkaPortSm() = default;

// From here on a change of a key makes no actor.
void MkaPortSm::end() {
  initialized_ = false;
  if (portStatus_) handleCleanUp();
  Vesk::endReactors(status_, intfStatus_, portStatus_, pamManager_, hwStatus_, defaultActorTimer_,
                    actorDeletionTimer_);
  mkaActorSmDelAll();
}

Vesk::Ptr<MkaPortSm> MkaPortSm::MkaPortSmIs(Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                                            Vesk::Ptr<MkaPamManager> pamManager,
                                            Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                            Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return Vesk::makeActive<MkaPortSm>(intfId, std::move(status), std::move(pamManager),
                                     std::move(hwStatus), std::move(timerWheel));
}

Vesk::Ptr<MkaPortSm> mkaPortSmFactory(Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                                      Vesk::Ptr<MkaPamManager> pamManager,
                                      Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                      Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return MkaPortSm::MkaPortSmIs(intfId, std::move(status), std::move(pamManager),
                                std::move(hwStatus), std::move(timerWheel));
}

void MkaPortSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, status_, intfStatus_, portStatus_, pamManager_, hwStatus_,
                               defaultActorTimer_, actorDeletionTimer_);
  for (MkaActorSm& actorSm : mkaActorSm_) actorSm.hasNotificationActiveIs(active);
}

Vesk::Ptr<Status> const& MkaPortSm::status() const { return status_->notifier(); }

Vesk::Ptr<IntfStatus const> const& MkaPortSm::intfStatus() const { return intfStatus_->notifier(); }

Vesk::Ptr<MkaPortStatus> const& MkaPortSm::portStatus() const { return portStatus_->notifier(); }

Vesk::Ptr<MkaPamManager> const& MkaPortSm::pamManager() const { return pamManager_->notifier(); }

Vesk::Ptr<MacSecIntfStatusPtrDir const> const& MkaPortSm::hwStatus() const {
  return hwStatus_->notifier();
}

Zorn::TimerWheel::NotifieeConst const& MkaPortSm::defaultActorTimer() const {
  return *defaultActorTimer_;
}
Zorn::TimerWheel::NotifieeConst const& MkaPortSm::actorDeletionTimer() const {
  return *actorDeletionTimer_;
}

Vesk::Ptr<MkaActorSm> MkaPortSm::mkaActorSmIs(
    Vesk::String8 const& ckn, Vesk::String8 const& cak, Lumo::IntfId intfId,
    Vesk::Ptr<Status> const& status, Vesk::Ptr<MkaPamManager> const& pamManager,
    Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
    Vesk::Ptr<Zorn::TimerWheel> const& timerWheel) {
  if (auto actorSm = mkaActorSm_[ckn]) return actorSm;
  return Vesk::childIs(
      mkaActorSm_, Vesk::make<MkaActorSm>(Vesk::Unstarted(), ckn, cak, intfId, status, pamManager,
                                          hwStatus, timerWheel));
}

void MkaPortSm::mkaActorSmDel(Vesk::String8 const& ckn) { Vesk::childDel(mkaActorSm_, ckn); }

void MkaPortSm::mkaActorSmDelAll() {
  for (MkaActorSm& actorSm : mkaActorSm_) mkaActorSmDel(actorSm.ckn());
}

void MkaPortSm::handleInitialized() {
  VESK_TRACE(8, ": IntfId ", intfId_);
  intfStatus_ = Vesk::make<IntfStatusReactor>(*this, status()->intfStatus(intfId_));
  cpStatus_ = status()->cpStatus(intfId_);
  VESK_ASSERT(intfStatus() && cpStatus_ && status()->portStatus(intfId_));
  portStatus_ = Vesk::make<PortStatusReactor>(*this, status()->portStatus(intfId_));
  defaultActorTimer_ = Vesk::make<DefaultActorTimerReactor>(*this, timerWheel_);
  actorDeletionTimer_ = Vesk::make<ActorDeletionTimerReactor>(*this, timerWheel_);
  takeUpActors();
  initialized_ = true;
  handleDefaultKey();
  handleKey();
}

// Of the actors that a former run left, those without a configured key go.
void MkaPortSm::takeUpActors() {
  for (auto i = portStatus()->actorStatus().iterator(); i; ++i) {
    if (i->name() != intfStatus()->key().ckn() && i->name() != intfStatus()->defaultKey().ckn()) {
      VESK_TRACE(3, ": Deleting actor status ", i->name(), " on ", intfId_);
      portStatus()->actorStatusDel(i);
    } else if (i->principal()) {
      principalActorCknIs(i->name());
    }
  }
}

void MkaPortSm::handleCleanUp() {
  VESK_TRACE(8, ": IntfId ", intfId_);
  for (auto i = portStatus()->actorStatus().iterator(); i; ++i) {
    VESK_TRACE(3, "Deleting actor ", i->name(), " on ", intfId_);
    mkaActorSmDel(i->name());
    portStatus()->actorStatusDel(i);
  }
  resetCpStatus(*cpStatus_);
}

MkaPortSm::PortStatusReactor::PortStatusReactor(MkaPortSm& sm, Vesk::Ptr<MkaPortStatus> portStatus)
    : Reactor(sm, std::move(portStatus)) {
  onActorStatusImmediate();
}

void MkaPortSm::PortStatusReactor::onActorStatus(Vesk::String8 const& ckn) {
  actorStatus_.follow(owner(), notifier()->actorStatus(), ckn);
}

void MkaPortSm::PortStatusReactor::onActorStatusImmediate() {
  actorStatus_.followAll(owner(), notifier()->actorStatus());
}

}  // namespace Macsec
