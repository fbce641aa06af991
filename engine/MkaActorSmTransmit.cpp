#include "engine/MkaActorSmReactors.h"
#include "runtime/Assert.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

// What happens when the transmit timer fires: the actor's clock, and one complete MKPDU.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

constexpr uint32_t kLastMessageNumber = 0xFFFFFFFF;
constexpr uint8_t kWithoutConfidentiality = 1;
constexpr uint8_t kWithConfidentiality = 2;

KeyInfo keyInfo(SakContext const& context) {
  Sak const& sak = context.sak();
  return KeyInfo(sak.an().value(), context.txInstalled(), context.rxInstalled(), sak.keyMsgId(),
                 sak.keyNum(), context.lpn());
}

uint8_t macsecCapability(CipherSuite cipher) {
  bool const isOurs = cipher == CipherSuite::gcmAesXpn128 || cipher == CipherSuite::gcmAesXpn256;
  return isOurs ? kWithConfidentiality : kWithoutConfidentiality;
}

}  // namespace

// IEEE 802.1X-2010, 9.4: each period a participant sends all that it has to say.
void MkaActorSm::handleMkpduTimerExpiry() {
  if (!initialized_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  handlePeerReview();
  if (auto tx = txMessageInfo()) transmit(*tx);
  mkpduTimer_->timeMinIs(Vesk::now() + status_->mkpduPeriod());
}

void MkaActorSm::transmit(MkaMessageInfo& tx) {
  tx.intfIdIs(intfId_);
  auto const info = tx.mkaInfoIs();
  info->baseInfoIs(basicInfo());
  tx.livePeerDelAll();
  tx.potentialPeerDelAll();
  for (MkaPeer& peer : actorStatus()->livePeer()) {
    tx.livePeerIs(peer.msgId(), peer.baseInfo().msgNum());
  }
  for (MkaPeer& peer : actorStatus()->potentialPeer()) {
    tx.potentialPeerIs(peer.msgId(), peer.baseInfo().msgNum());
  }
  info->sakDistInfoIs(sakDistInfo());
  info->sakUseInfoIs(sakUseInfo());
  tx.countInc(1);
}

// IEEE 802.1X-2010, 9.5: as long as no key server is known, every actor that may be one claims the
// role, and so is a candidate for the others' election; from then on the elected one alone.
BasicInfo MkaActorSm::basicInfo() {
  bool const claims =
      actorStatus()->keyServer() == Sci() ? mayBeKeyServer() : actorStatus()->electedSelf();
  unsigned char const priority = getKeyServerPriority();
  if (actorStatus()->msgNum() == kLastMessageNumber) updateMsgId();
  Vesk::String8 msgId = actorStatus()->msgId();
  uint32_t const msgNum = actorStatus()->msgNumInc(1);
  VESK_ASSERT(!msgId.empty() && msgNum != 0);
  return BasicInfo(priority, claims, actorStatus()->macsecDesired(),
                   macsecCapability(intfStatus_->macsecParams().cipher()), portStatus_->mySci(),
                   std::move(msgId), msgNum, ckn_);
}

// IEEE 802.1X-2010, 9.8: the SAK goes out from the moment it is made until transmit with it has
// begun.
SakDistInfo MkaActorSm::sakDistInfo() const {
  Sak const& sak = actorStatus()->distSak();
  bool const isDistributed = actorStatus()->electedSelf() && actorStatus()->principal() &&
                             !sak.isDefault() && !actorStatus()->sakTransmit();
  if (!isDistributed) return SakDistInfo();
  return SakDistInfo(ANOffset(sak.an().value(), 0), sak.keyNum(),
                     intfStatus_->macsecParams().cipher(), sak.key());
}

// IEEE 802.1X-2010, 9.10: the flags tell what is installed, not what has been asked for.
SakUseInfo MkaActorSm::sakUseInfo() const {
  SakContext const& old = cpStatus_->oldSakContext();
  SakContext const& latest = cpStatus_->latestSakContext();
  if (old.isDefault() && latest.isDefault()) return SakUseInfo();
  if (actorStatus()->livePeer().empty()) return SakUseInfo();
  return SakUseInfo(keyInfo(old), keyInfo(latest),
                    PlainTextInfo(false, false, status_->delayProtection()));
}

}  // namespace Macsec
