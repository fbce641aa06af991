#include "engine/MkaActorSm.h"

#include "engine/MkaActorSmReactors.h"
#include "platform/KeyDerivation.h"
#include "platform/WardcodeLib.h"
#include "runtime/Assert.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

// The frame of an actor: construction, identity, children, success, end.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

Vesk::LogHandle const MKA_STATE_CHG("MKA_STATE_CHG", Vesk::LogSeverity::notice,
                                    "MKA using key %s %s on interface %s",
                                    "Macsec key agreement protocol state changed on the interface",
                                    Vesk::NoActionRequired, 0.0, 1.0);

constexpr int kMemberIdentifierBits = 96;
// Priority of an actor whose key comes from 802.1X, by the kind of that key.
constexpr unsigned char kDot1xKeyServerPriority = 16;
constexpr unsigned char kNeverKeyServerPriority = 255;

using Derivation = void (*)(unsigned char const*, unsigned char const*, int, Vesk::String8&);

Vesk::String8 derived(Derivation derive, Vesk::String8 const& cak, Vesk::String8 const& ckn,
                      CipherSuite cipher) {
  Vesk::String8 key;
  derive(bytesOf(WardcodeLib::doDecodeKey(cak)), bytesOf(ckn), static_cast<int>(cipher), key);
  return WardcodeLib::doEncodeKey(key);
}

}  // namespace

MkaActorSm::MkaActorSm(Vesk::Unstarted, Vesk::String8 ckn, Vesk::String8 cak, Lumo::IntfId intfId,
                       Vesk::Ptr<Status> status, Vesk::Ptr<MkaPamManager> pamManager,
                       Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                       Vesk::Ptr<Zorn::TimerWheel> timerWheel)
    : ckn_(std::move(ckn)),
      intfId_(intfId),
      pamManager_(std::move(pamManager)),
      cak_(std::move(cak)),
      status_(std::move(status)),
      hwStatus_(std::move(hwStatus)),
      timerWheel_(std::move(timerWheel)) {
  if (pamManager_) pamManagerReactor_ = Vesk::make<PamManagerReactor>(*this, pamManager_);
}

MkaActorSm::MkaActorSm(Vesk::String8 ckn, Vesk::String8 cak, Lumo::IntfId intfId,
                       Vesk::Ptr<Status> status, Vesk::Ptr<MkaPamManager> pamManager,
                       Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                       Vesk::Ptr<Zorn::TimerWheel> timerWheel)
    : MkaActorSm(Vesk::Unstarted(), std::move(ckn), std::move(cak), intfId, std::move(status),
                 std::move(pamManager), std::move(hwStatus), std::move(timerWheel)) {
  handleInitialized();
}

MkaActorSm::~MkaActorSm() = default;

void MkaActorSm::end() {
  handleCleanUp();
  Vesk::endReactors(actorStatusReactor_, pamManagerReactor_, rxMessageInfo_, mkpduTimer_);
}

Vesk::Ptr<MkaActorSm> MkaActorSm::MkaActorSmIs(Vesk::String8 ckn, Vesk::String8 cak,
                                               Lumo::IntfId intfId, Vesk::Ptr<Status> status,
                                               Vesk::Ptr<MkaPamManager> pamManager,
                                               Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                               Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return Vesk::makeActive<MkaActorSm>(std::move(ckn), std::move(cak), intfId, std::move(status),
                                      std::move(pamManager), std::move(hwStatus),
                                      std::move(timerWheel));
}

Vesk::Ptr<MkaActorSm> mkaActorSmFactory(Vesk::String8 ckn, Vesk::String8 cak, Lumo::IntfId intfId,
                                        Vesk::Ptr<Status> status,
                                        Vesk::Ptr<MkaPamManager> pamManager,
                                        Vesk::Ptr<MacSecIntfStatusPtrDir const> hwStatus,
                                        Vesk::Ptr<Zorn::TimerWheel> timerWheel) {
  return MkaActorSm::MkaActorSmIs(std::move(ckn), std::move(cak), intfId, std::move(status),
                                  std::move(pamManager), std::move(hwStatus),
                                  std::move(timerWheel));
}

void MkaActorSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, actorStatusReactor_, pamManagerReactor_, rxMessageInfo_,
                               keyServerSm_, cpSm_, mkpduTimer_);
}

Vesk::Ptr<MkaMessageInfo> MkaActorSm::txMessageInfo() const {
  return pamManager_ ? pamManager_->txMessageInfo() : nullptr;
}

Vesk::Ptr<MkaMessageInfo> MkaActorSm::rxMessageInfo() const {
  return pamManager_ ? pamManager_->rxMessageInfo() : nullptr;
}

Zorn::TimerWheel::NotifieeConst const& MkaActorSm::mkpduTimer() const { return *mkpduTimer_; }

void MkaActorSm::rxMessageInfoReactorIs(Vesk::Ptr<MkaMessageInfo> const& rxMessageInfo) {
  if (rxMessageInfo_) {
    rxMessageInfo_->notifierIs(rxMessageInfo);
  } else if (rxMessageInfo) {
    rxMessageInfo_ = Vesk::make<RxMessageInfoReactor>(*this, rxMessageInfo, intfId_);
  }
}

Vesk::Ptr<MkaKeyServerSm> MkaActorSm::keyServerSmIs(
    Lumo::IntfId intfId, Vesk::String8 const& ckn, Vesk::Ptr<Status> const& status,
    Vesk::Ptr<Zorn::TimerWheel> const& mkaPeriodicTimer,
    Vesk::Ptr<Zorn::TimerWheel> const& reKeyTimer) {
  if (keyServerSm_ && keyServerSm_->isFor(intfId, ckn, status, mkaPeriodicTimer, reKeyTimer))
    return keyServerSm_;
  keyServerSmDel();
  return Vesk::childIs(keyServerSm_,
                       Vesk::make<MkaKeyServerSm>(Vesk::Unstarted(), intfId, ckn, status,
                                                  mkaPeriodicTimer, reKeyTimer));
}

Vesk::Ptr<ControlledPortSm> MkaActorSm::cpSmIs(
    Vesk::String8 const& ckn, Lumo::IntfId intfId, Vesk::Ptr<Status> const& status,
    Vesk::Ptr<MacSecIntfStatusPtrDir const> const& hwStatus,
    Vesk::Ptr<Zorn::TimerWheel> const& timerWheel) {
  if (cpSm_ && cpSm_->isFor(ckn, intfId, status, hwStatus, timerWheel)) return cpSm_;
  cpSmDel();
  return Vesk::childIs(cpSm_, Vesk::make<ControlledPortSm>(Vesk::Unstarted(), ckn, intfId, status,
                                                           hwStatus, timerWheel));
}

void MkaActorSm::handleInitialized() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  intfStatus_ = status_->intfStatus(intfId_);
  portStatus_ = status_->portStatus(intfId_);
  VESK_ASSERT(portStatus_ && portStatus_->actorStatus(ckn_));
  actorStatus_ = portStatus_->actorStatus(ckn_);
  actorStatusReactor_ = Vesk::make<ActorStatusReactor>(*this, actorStatus_);
  cpStatus_ = status_->cpStatus(intfId_);
  if (actorStatus()->msgId().empty()) {
    updateMsgId();
    actorStatus()->cakIs(cak_);
    deriveKeys();
  }
  initialized_ = true;
  handlePrincipalActor();
  mkpduTimer_ = Vesk::make<MkpduTimerReactor>(*this, timerWheel_);
  armFirstMkpdu();
  rxMessageInfoReactorIs(rxMessageInfo());
}

// IEEE 802.1X-2010, 9.3.3.
void MkaActorSm::deriveKeys() {
  CipherSuite const cipher = intfStatus_->macsecParams().cipher();
  actorStatus()->kekIs(derived(&deriveKek, cak_, ckn_, cipher));
  actorStatus()->ickIs(derived(&deriveIck, cak_, ckn_, cipher));
}

// A whole number of seconds below the period spreads the actors; the shorter period of delay
// protection leaves nothing to spread.
void MkaActorSm::armFirstMkpdu() {
  int const period = static_cast<int>(status_->mkpduPeriod());
  bool const isSpread = !status_->delayProtection() && period > 0;
  double const delay = isSpread ? Vesk::world().rand() % period : 0;
  mkpduTimer_->timeMinIs(Vesk::now() + delay);
}

// IEEE 802.1X-2010, 9.4.2: a random number, and message numbers that begin again with it.
void MkaActorSm::updateMsgId() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  Vesk::String8 msgId;
  do {
    randomNumberGenerator(kMemberIdentifierBits, msgId);
    actorStatus()->msgIdIs(msgId);
    VESK_TRACE(3, ": Generated msg ID is ", msgId, " for actor ", ckn_, " on ", intfId_);
    actorStatus()->msgNumIs(0);
  } while (conflictsWithPeer(msgId));
}

bool MkaActorSm::conflictsWithPeer(Vesk::String8 const& msgId) const {
  if (actorStatus()->livePeer(msgId)) {
    VESK_TRACE(3, ": Found a conflicting msgID in live peer list for actor ", ckn_, " on ",
               intfId_);
    return true;
  }
  if (actorStatus()->potentialPeer(msgId)) {
    VESK_TRACE(3, ": Found a conflicting msgID in potential peer list for actor ", ckn_, " on ",
               intfId_);
    return true;
  }
  return false;
}

void MkaActorSm::handlePrincipalActor() {
  if (!initialized_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  if (!actorStatus()->principal()) {
    keyServerSmDel();
    cpSmDel();
    return;
  }
  keyServerSmIs(intfId_, ckn_, status_, timerWheel_, timerWheel_);
  if (!actorStatus()->principal()) return;
  cpSmIs(ckn_, intfId_, status_, hwStatus_, timerWheel_);
}

unsigned char MkaActorSm::getKeyServerPriority() const {
  switch (intfStatus_->dot1xType()) {
    case 2:
      return intfStatus_->keyServerPriority();
    case 0:
      return kDot1xKeyServerPriority;
    default:
      return kNeverKeyServerPriority;
  }
}

bool MkaActorSm::mayBeKeyServer() const {
  return intfStatus_->dot1xType() == 2 || intfStatus_->dot1xType() == 0;
}

void MkaActorSm::doUpdateActorSuccess() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  bool const isGood = !actorStatus()->livePeer().empty() && actorStatus()->keyServer() != Sci();
  if (isGood && !actorStatus()->success()) {
    VESK_TRACE(3, ": Marking actor ", ckn_, " SUCCESS", " on ", intfId_);
    Vesk::log(MKA_STATE_CHG, ckn_, "UP", intfId_);
    actorStatus()->successIs(true);
  } else if (!isGood && actorStatus()->success()) {
    VESK_TRACE(3, ": Marking actor ", ckn_, " FAILED", " on ", intfId_);
    Vesk::log(MKA_STATE_CHG, ckn_, "DOWN", intfId_);
    actorStatus()->successIs(false);
    actorStatus()->electedSelfIs(false);
    actorStatus()->keyServerIs(Sci());
  }
}

void MkaActorSm::handleCleanUp() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  keyServerSmDel();
  cpSmDel();
  if (mkpduTimer_) mkpduTimer_->timeMinIs(Zorn::never);
}

}  // namespace Macsec
