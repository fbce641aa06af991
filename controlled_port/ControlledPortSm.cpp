#include "controlled_port/ControlledPortSm.h"

#include "controlled_port/ControlledPortSmReactors.h"
#include "platform/Hex.h"
#include "platform/KeyDerivation.h"
#include "runtime/Assert.h"
#include "runtime/NetValues.h"
#include "runtime/Trace.h"

// What the controlled port makes of the actor's keys and peers.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::ControlledPortSm");

Sak salted(Sak sak) {
  Vesk::String8 salt;
  generateSalt(bytesOf(sak.keyMsgId()), sak.keyNum(), salt);
  sak.saltIs(salt);
  return sak;
}

bool isGreater(Sci const& a, Sci const& b) {
  return a.addr() > b.addr() || (a.addr() == b.addr() && a.portNum() > b.portNum());
}

}  // namespace

ControlledPortSm::ControlledPortSm(Vesk::Unstarted, Vesk::String8 ckn, Lumo::IntfId intfId,
                                   Vesk::Ptr<Status> status,
                                   Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                   Vesk::Ptr<Zorn::TimerWheel> timerWheel)
    : ckn_(std::move(ckn)),
      intfId_(intfId),
      status_(std::move(status)),
      hwStatus_(Vesk::make<HwStatusReactor>(*this, std::move(hwStatus))),
      timerWheel_(std::move(timerWheel)) {}

ControlledPortSm::ControlledPortSm(Vesk::String8 ckn, Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                                   Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                   Vesk::Ptr<Zorn::TimerWheel> timerWheel)
    : ControlledPortSm(Vesk::Unstarted(), std::move(ckn), intfId, std::move(status),
                       std::move(hwStatus), std::move(timerWheel)) {
  handleInitialized();
}

ControlledPortSm::~ControlledPortSm() = default;

void ControlledPortSm::end() {
  Vesk::endReactors(actorStatus_, latestKeyTxEnableTimer_, oldKeyRetirementTimer_, hwStatus_);
}

Vesk::Ptr<ControlledPortSm> ControlledPortSm::ControlledPortSmIs(
    Vesk::String8 ckn, Lumo::IntfId intfId, Vesk::Ptr<Status> status,
    Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus, Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return Vesk::makeActive<ControlledPortSm>(std::move(ckn), intfId, std::move(status),
                                            std::move(hwStatus), std::move(timerWheel));
}

Vesk::Ptr<ControlledPortSm> controlledPortSmFactory(
    Vesk::String8 ckn, Lumo::IntfId intfId, Vesk::Ptr<Status> status,
    Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus, Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return ControlledPortSm::ControlledPortSmIs(std::move(ckn), intfId, std::move(status),
                                              std::move(hwStatus), std::move(timerWheel));
}

void ControlledPortSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, actorStatus_, latestKeyTxEnableTimer_,
                               oldKeyRetirementTimer_, hwStatus_);
}

bool ControlledPortSm::isFor(Vesk::String8 const& ckn, Lumo::IntfId intfId,
                             Vesk::Ptr<Status> const& status,
                             Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
                             Vesk::Ptr<Zorn::TimerWheel> const& timerWheel) const {
  return ckn == ckn_ && intfId == intfId_ && status == status_ &&
         hwStatus == hwStatus_->notifier() && timerWheel == timerWheel_;
}

Vesk::Ptr<MkaActorStatus const> const& ControlledPortSm::actorStatus() const {
  return actorStatus_->notifier();
}

Vesk::Ptr<MacSecIntfStatusPtrDir const> const& ControlledPortSm::hwStatus() const {
  return hwStatus_->notifier();
}

Zorn::TimerWheel::NotifieeConst const& ControlledPortSm::latestKeyTxEnableTimer() const {
  return *latestKeyTxEnableTimer_;
}
Zorn::TimerWheel::NotifieeConst const& ControlledPortSm::oldKeyRetirementTimer() const {
  return *oldKeyRetirementTimer_;
}
size_t ControlledPortSm::followedInterfaces() const { return hwStatus_->followed(); }

void ControlledPortSm::handleInitialized() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  portStatus_ = status_->portStatus(intfId_);
  actorStatus_ = Vesk::make<ActorStatusReactor>(*this, portStatus_->actorStatus(ckn_));
  cpStatus_ = status_->cpStatus(intfId_);
  VESK_ASSERT(actorStatus() && cpStatus_);
  latestKeyTxEnableTimer_ = Vesk::make<LatestKeyTxEnableTimerReactor>(*this, timerWheel_);
  oldKeyRetirementTimer_ = Vesk::make<OldKeyRetirementTimerReactor>(*this, timerWheel_);
  initialized_ = true;
  handleLivePeer();
  handleDistSak();
  handleKeysLPN();
}

// IEEE 802.1X-2010, 9.10.
void ControlledPortSm::handleDistSak() {
  if (!initialized_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  Sak const distSak = actorStatus()->distSak();
  if (distSak == Sak()) {
    VESK_TRACE(3, ": Ignoring empty distSak for actor ", ckn_, " on ", intfId_);
    return;
  }
  if (isSameSak(distSak, cpStatus_->latestSakContext().sak())) {
    VESK_TRACE(3, ": Ignoring duplicate latest SAK for actor ", ckn_, " on ", intfId_);
    return;
  }
  if (isSameSak(distSak, cpStatus_->oldSakContext().sak())) {
    VESK_TRACE(3, ": Ignoring duplicate old SAK for actor ", ckn_, " on ", intfId_);
    return;
  }
  if (cpStatus_->latestSakContext() != SakContext()) cleanupLatestSakContext();
  SakContext const& old = cpStatus_->oldSakContext();
  if (old != SakContext() && old.sak().an() == distSak.an()) handleOldKeyRetirement();
  askForReceive(distSak);
}

// The salt exists only in what the hardware is given.
void ControlledPortSm::askForReceive(Sak const& sak) {
  VESK_ASSERT(sak != Sak());
  SakContext latest;
  latest.sakIs(sak);
  latest.rxEnabledIs(true);
  VESK_TRACE(1, ": Enabling receive on key: ", sak.keyMsgId(), ":", sak.keyNum(), " for actor ",
             ckn_, " on ", intfId_);
  cpStatus_->latestSakContextIs(latest);
  cpStatus_->rxSakIs(salted(sak));
}

// A key that is live on transmit isn't thrown away: it takes the old one's place at once.
void ControlledPortSm::cleanupLatestSakContext() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  SakContext const latest = cpStatus_->latestSakContext();
  if (latest.txInstalled()) {
    oldKeyRetirementTimer_->timeMinIs(Zorn::never);
    handleOldKeyRetirement();
    return;
  }
  cpStatus_->rxSakDel(latest.sak().an());
  cpStatus_->latestSakContextIs(SakContext());
}

void ControlledPortSm::handleSakTransmit() {
  if (!initialized_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  if (!isSameSak(cpStatus_->latestSakContext().sak(), actorStatus()->distSak())) {
    VESK_TRACE(3, ": Ignoring sakTransmit because distSak and latest key do not match for actor ",
               ckn_, " on ", intfId_);
    return;
  }
  if (!actorStatus()->sakTransmit()) return;
  handleLatestKeyTxEnable();
}

// IEEE 802.1X-2010, 9.10. The key server doesn't start to send with a key that its own receive side
// hasn't got; a peer has no such wait. It is `distSak` that is transmitted, not the context.
void ControlledPortSm::handleLatestKeyTxEnable() {
  if (!initialized_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  SakContext latest = cpStatus_->latestSakContext();
  SakContext old = cpStatus_->oldSakContext();
  Sak const distSak = actorStatus()->distSak();
  if (actorStatus()->electedSelf() && latest != SakContext() && !latest.rxInstalled()) {
    VESK_TRACE(3, ": Ignoring latest key TX enable on key: ", distSak.keyMsgId(), ":",
               distSak.keyNum(), " for actor ", ckn_, " on ", intfId_);
    return;
  }
  latest.txEnabledIs(true);
  old.txEnabledIs(false);
  VESK_TRACE(1, ": Enabling transmit on key: ", distSak.keyMsgId(), ":", distSak.keyNum(),
             " for actor ", ckn_, " on ", intfId_);
  cpStatus_->latestSakContextIs(latest);
  cpStatus_->oldSakContextIs(old);
  cpStatus_->txSakIs(salted(actorStatus()->distSak()));
  latestKeyTxEnableTimer_->timeMinIs(Zorn::never);
}

void ControlledPortSm::handleOldKeyRetirement() {
  if (!initialized_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  Sak const old = cpStatus_->oldSakContext().sak();
  Sak const* const received = cpStatus_->rxSak(old.an());
  if (old != Sak() && received && *received != Sak()) cpStatus_->rxSakDel(old.an());
  cpStatus_->oldSakContextIs(SakContext(cpStatus_->latestSakContext()));
  cpStatus_->latestSakContextIs(SakContext());
  VESK_TRACE(3, ": Moving latest key to old key for actor ", ckn_, " on ", intfId_);
  oldKeyRetirementTimer_->timeMinIs(Zorn::never);
}

// An empty context means association number 0: where both numbers are equal the second entry
// overwrites the first.
void ControlledPortSm::handleKeysLPN() {
  if (!initialized_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  KeysLPN const lpn = actorStatus()->keysLPN();
  cpStatus_->rxLPNIs(RxLPN(lpn.oldKeyLPN(), cpStatus_->oldSakContext().sak().an()));
  cpStatus_->rxLPNIs(RxLPN(lpn.latestKeyLPN(), cpStatus_->latestSakContext().sak().an()));
}

void ControlledPortSm::handleLivePeer() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  for (MkaPeer& peer : actorStatus()->livePeer()) handleLivePeer(peer.msgId());
}

// The numerically greater SCI gets SSCI 1 and the other 2; with several peers the last call wins.
void ControlledPortSm::handleLivePeer(Vesk::String8 const& peer) {
  if (!initialized_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  auto const record = actorStatus()->livePeer(peer);
  if (!record) return;
  Sci const peerSci = record->baseInfo().sci();
  Sci const mySci = portStatus_->mySci();
  if (peerSci == Sci()) {
    VESK_TRACE(3, ": Peer Sci cannot be all zeros");
    return;
  }
  bool const isPeerGreater = isGreater(peerSci, mySci);
  cpStatus_->mySsciIs(Ssci(mySci, hexString(Lumo::NetU32(isPeerGreater ? 2 : 1))));
  cpStatus_->peerSsciIs(Ssci(peerSci, hexString(Lumo::NetU32(isPeerGreater ? 1 : 2))));
}

}  // namespace Macsec
