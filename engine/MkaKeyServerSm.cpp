#include "engine/MkaKeyServerSm.h"

#include "platform/Hex.h"
#include "platform/KeyDerivation.h"
#include "platform/WardcodeLib.h"
#include "runtime/Assert.h"
#include "runtime/Log.h"
#include "runtime/NetValues.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::KeyServer");

Vesk::LogHandle const MKA_SAK_CREATED(
    "MKA_SAK_CREATED", Vesk::LogSeverity::informational,
    "New SAK created with key id ending in %s:%s on interface %s",
    "New Secure Association established. Reasons could be : Rekey Period Expiry,       New "
    "KeyServer or LLPN Exhaustion",
    Vesk::NoActionRequired, 120.0, 1.0);

// From here on a member identifier is shown in messages: its last 8 digits.
constexpr size_t kShownFrom = 16;

}  // namespace

struct MkaKeyServerSm::MkaPeriodicTimerReactor final
    : Zorn::TimerReactor<MkaKeyServerSm, Zorn::TimerWheel::NotifieeConst> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().handleMkaLifetimeTimerExpiry(); }
};

struct MkaKeyServerSm::ReKeyTimerReactor final
    : Zorn::TimerReactor<MkaKeyServerSm, Zorn::TimerWheel::NotifieeConst> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().handleReKeyTimerExpiry(); }
};

struct MkaKeyServerSm::MkaActorStatusReactor final
    : Vesk::Reactor<MkaActorStatus, MkaKeyServerSm, MkaActorStatusReactor> {
  using Reactor::Reactor;
  void onElectedSelf() override { owner().handleKeyServerChange(); }
  void onLivePeer(Vesk::String8 const& peer) override { owner().handleLivePeer(peer); }
  void onLlpnExhaustion() override { owner().handleLlpnExhaustion(); }
};

struct MkaKeyServerSm::MkaIntfStatusReactor final
    : Vesk::Reactor<IntfStatus const, MkaKeyServerSm, MkaIntfStatusReactor> {
  using Reactor::Reactor;
  void onReKeyPeriod() override { owner().handleReKeyPeriod(); }
};

MkaKeyServerSm::MkaKeyServerSm(Vesk::Unstarted, Lumo::IntfId intfId, Vesk::String8 ckn,
                               Vesk::Ptr<Status> status,
                               Vesk::Ptr<Zorn::TimerWheel> mkaPeriodicTimer,
                               Vesk::Ptr<Zorn::TimerWheel> reKeyTimer)
    : intfId_(intfId),
      ckn_(std::move(ckn)),
      status_(std::move(status)),
      mkaPeriodicTimer_(Vesk::make<MkaPeriodicTimerReactor>(*this, std::move(mkaPeriodicTimer))),
      reKeyTimer_(Vesk::make<ReKeyTimerReactor>(*this, std::move(reKeyTimer))) {}

MkaKeyServerSm::MkaKeyServerSm(Lumo::IntfId intfId, Vesk::String8 ckn, Vesk::Ptr<Status> status,
                               Vesk::Ptr<Zorn::TimerWheel> mkaPeriodicTimer,
                               Vesk::Ptr<Zorn::TimerWheel> reKeyTimer)
    : MkaKeyServerSm(Vesk::Unstarted(), intfId, std::move(ckn), std::move(status),
                     std::move(mkaPeriodicTimer), std::move(reKeyTimer)) {
  handleInitialized();
}

MkaKeyServerSm::~MkaKeyServerSm() = default;

void MkaKeyServerSm::end() {
  Vesk::endReactors(mkaPeriodicTimer_, reKeyTimer_, mkaActorStatus_, mkaIntfStatus_);
}

Vesk::Ptr<MkaKeyServerSm> MkaKeyServerSm::MkaKeyServerSmIs(
    Lumo::IntfId intfId, Vesk::String8 ckn, Vesk::Ptr<Status> status,
    Vesk::Ptr<Zorn::TimerWheel> mkaPeriodicTimer, Vesk::Ptr<Zorn::TimerWheel> reKeyTimer) {
  return Vesk::makeActive<MkaKeyServerSm>(intfId, std::move(ckn), std::move(status),
                                          std::move(mkaPeriodicTimer), std::move(reKeyTimer));
}

Vesk::Ptr<MkaKeyServerSm> mkaKeyServerSmFactory(Lumo::IntfId intfId, Vesk::String8 ckn,
                                                Vesk::Ptr<Status> status,
                                                Vesk::Ptr<Zorn::TimerWheel> mkaPeriodicTimer,
                                                Vesk::Ptr<Zorn::TimerWheel> reKeyTimer) {
  return MkaKeyServerSm::MkaKeyServerSmIs(intfId, std::move(ckn), std::move(status),
                                          std::move(mkaPeriodicTimer), std::move(reKeyTimer));
}

void MkaKeyServerSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, mkaPeriodicTimer_, reKeyTimer_, mkaActorStatus_,
                               mkaIntfStatus_);
}

bool MkaKeyServerSm::isFor(Lumo::IntfId intfId, Vesk::String8 const& ckn,
                           Vesk::Ptr<Status> const& status,
                           Vesk::Ptr<Zorn::TimerWheel> const& mkaPeriodicTimer,
                           Vesk::Ptr<Zorn::TimerWheel> const& reKeyTimer) const {
  return intfId == intfId_ && ckn == ckn_ && status == status_ &&
         mkaPeriodicTimer == mkaPeriodicTimer_->wheel() && reKeyTimer == reKeyTimer_->wheel();
}

Zorn::TimerWheel::NotifieeConst const& MkaKeyServerSm::mkaPeriodicTimer() const {
  return *mkaPeriodicTimer_;
}
Zorn::TimerWheel::NotifieeConst const& MkaKeyServerSm::reKeyTimer() const { return *reKeyTimer_; }

Vesk::Ptr<MkaActorStatus> const& MkaKeyServerSm::mkaActorStatus() const {
  return mkaActorStatus_->notifier();
}

Vesk::Ptr<IntfStatus const> const& MkaKeyServerSm::mkaIntfStatus() const {
  return mkaIntfStatus_->notifier();
}

bool MkaKeyServerSm::isGuardArmed() const { return mkaPeriodicTimer_->isArmed(); }

void MkaKeyServerSm::armGuard() {
  mkaPeriodicTimer_->timeMinIs(Vesk::now() + status_->mkaLifeTime());
}

void MkaKeyServerSm::disarmGuard() { mkaPeriodicTimer_->timeMinIs(Zorn::never); }

void MkaKeyServerSm::armReKey() {
  double const period = mkaIntfStatus()->reKeyPeriod();
  reKeyTimer_->timeMinIs(period > 0 ? Vesk::now() + period : Zorn::never);
}

// A key in use stays in `distSak`.
void MkaKeyServerSm::withdrawUnusedSak() {
  if (!mkaActorStatus()->sakTransmit()) mkaActorStatus()->distSakIs(Sak());
}

void MkaKeyServerSm::generateAndArmGuard() {
  generateNewSak();
  mkaActorStatus()->newSakIs(false);
  armGuard();
}

void MkaKeyServerSm::handleInitialized() {
  VESK_TRACE(8, ": IntfId ", intfId_, " for ckn ", ckn_);
  mkaPortStatus_ = status_->portStatus(intfId_);
  VESK_ASSERT(mkaPortStatus_ && mkaPortStatus_->actorStatus(ckn_));
  mkaActorStatus_ = Vesk::make<MkaActorStatusReactor>(*this, mkaPortStatus_->actorStatus(ckn_));
  mkaIntfStatus_ = Vesk::make<MkaIntfStatusReactor>(*this, status_->intfStatus(intfId_));
  if (mkaActorStatus()->electedSelf()) {
    mkaActorStatus()->newSakIs(true);
    armGuard();
    armReKey();
  } else {
    mkaActorStatus()->newSakIs(false);
    disarmGuard();
    reKeyTimer_->timeMinIs(Zorn::never);
  }
  initialized_ = true;
}

void MkaKeyServerSm::handleKeyServerChange() {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId_, " for ckn ", ckn_);
  if (mkaActorStatus()->electedSelf()) {
    VESK_TRACE(3, "Non-key-server changed to key server on intfId ", intfId_, " for ckn ", ckn_);
    mkaActorStatus()->newSakIs(true);
    armGuard();
    armReKey();
    return;
  }
  VESK_TRACE(3, "Key server changed to non-key-server on intfId ", intfId_, " for ckn ", ckn_);
  mkaActorStatus()->newSakIs(false);
  disarmGuard();
  reKeyTimer_->timeMinIs(Zorn::never);
  mkaActorStatus()->distSakIs(Sak());
}

// IEEE 802.1X-2010, 9.8: another live peer means another SAK.
void MkaKeyServerSm::handleLivePeer(Vesk::String8 const& peer) {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId_, " for ckn ", ckn_);
  if (mkaActorStatus()->livePeer(peer)) {
    VESK_TRACE(3, "New live peer ", peer, " added on intfId ", intfId_, " for ckn ", ckn_);
  } else {
    VESK_TRACE(3, "Live peer ", peer, " being deleted on intfId ", intfId_, " for ckn ", ckn_);
  }
  if (!mkaActorStatus()->electedSelf()) {
    VESK_TRACE(3, "Not the keyServer. Bailing on intfId ", intfId_, " for ckn ", ckn_);
    return;
  }
  if (mkaActorStatus()->livePeer().empty()) {
    VESK_TRACE(3, "Live peer list is empty. Disarming timer for sakGeneration", " on intfId ",
               intfId_, " for ckn ", ckn_);
    disarmGuard();
    withdrawUnusedSak();
  } else if (!isGuardArmed()) {
    generateAndArmGuard();
  } else {
    mkaActorStatus()->newSakIs(true);
    withdrawUnusedSak();
  }
}

// Doesn't ask whether the actor is key server: the timer of one that isn't is disarmed.
void MkaKeyServerSm::handleMkaLifetimeTimerExpiry() {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId_, " for ckn ", ckn_);
  if (mkaActorStatus()->livePeer().empty()) {
    VESK_TRACE(3, "Live peer list is empty. Disarming timer for sakGeneration", " on intfId ",
               intfId_, " for ckn ", ckn_);
    mkaActorStatus()->newSakIs(false);
    disarmGuard();
    withdrawUnusedSak();
  } else if (mkaActorStatus()->newSak()) {
    VESK_TRACE(3, "Generating new SAK upon timer expiry on intfId ", intfId_, " for ckn ", ckn_);
    generateAndArmGuard();
  } else {
    VESK_TRACE(3, "Not generating new SAK upon timer expiry. Disarming timer", " on intfId ",
               intfId_, " for ckn ", ckn_);
    disarmGuard();
  }
}

void MkaKeyServerSm::handleLlpnExhaustion() {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId_, " for ckn ", ckn_);
  if (!mkaActorStatus()->electedSelf()) {
    VESK_TRACE(3, "not the keyServer. Bailing on intfId ", intfId_, " for ckn ", ckn_);
    return;
  }
  if (!mkaActorStatus()->livePeer().empty()) {
    generateAndArmGuard();
    return;
  }
  VESK_TRACE(3, "Live peer list is empty. Disarming timer for sakGeneration", " on intfId ",
             intfId_, " for ckn ", ckn_);
  disarmGuard();
  withdrawUnusedSak();
}

void MkaKeyServerSm::handleReKeyPeriod() {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId_, " for ckn ", ckn_);
  if (mkaActorStatus()->electedSelf()) {
    armReKey();
  } else {
    VESK_TRACE(3, "not the keyServer. Bailing on intfId ", intfId_, " for ckn ", ckn_);
  }
}

void MkaKeyServerSm::handleReKeyTimerExpiry() {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId_, " for ckn ", ckn_);
  if (!mkaActorStatus()->livePeer().empty()) {
    generateAndArmGuard();
    armReKey();
    return;
  }
  VESK_TRACE(3, "Live peer list is empty. Disarming mkaPeriodicTimer only", " on intfId ", intfId_,
             " for ckn ", ckn_);
  disarmGuard();
}

// Nonce, member identifiers of the live peers, key number (IEEE 802.1X-2010, 9.8.1), as
// hexadecimal digits.
Vesk::String8 MkaKeyServerSm::sakContext(uint32_t keyNum) const {
  Vesk::String8 context;
  randomNumberGenerator(static_cast<int>(mkaIntfStatus()->macsecParams().cipher()), context);
  for (MkaPeer& peer : mkaActorStatus()->livePeer()) context += peer.msgId();
  return context + hexString(Lumo::NetU32(keyNum));
}

// IEEE 802.1X-2010, 9.8.1. The controlled port sees `sakTransmit` false before the key arrives.
void MkaKeyServerSm::generateNewSak() {
  VESK_TRACE(8, ": IntfId ", intfId_, " for ckn ", ckn_);
  int const bits = static_cast<int>(mkaIntfStatus()->macsecParams().cipher());
  uint32_t const keyNum = mkaActorStatus()->keyNum() + 1;
  Vesk::String8 const context = sakContext(keyNum);
  Vesk::String8 const cak = WardcodeLib::doDecodeKey(mkaActorStatus()->cak());
  Vesk::String8 key;
  deriveSak(bytesOf(cak), bytesOf(context), bits, key);
  Sak sak(mkaPortStatus_->anOfNextKey());
  sak.keyMsgIdIs(mkaActorStatus()->msgId());
  sak.keyNumIs(keyNum);
  sak.keyIs(WardcodeLib::doEncodeKey(key));
  Vesk::log(MKA_SAK_CREATED, sak.keyMsgId().from(kShownFrom), keyNum, intfId_);
  mkaActorStatus()->sakTransmitIs(false);
  mkaActorStatus()->distSakIs(sak);
  mkaActorStatus()->keyNumIs(keyNum);
}

}  // namespace Macsec
