#include <algorithm>

#include "engine/MkaActorSmReactors.h"
#include "model/PacketNumbers.h"
#include "runtime/Trace.h"

// The key-related parameter sets of an MKPDU: what the key server distributes, and who may transmit
// with it when.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

// The sender's view of a SAK; the default value when it has none.
KeyInfo const& matching(SakUseInfo const& use, Sak const& sak) {
  static KeyInfo const none;
  if (sakMatch(use.latestKeyInfo(), sak)) return use.latestKeyInfo();
  return sakMatch(use.oldKeyInfo(), sak) ? use.oldKeyInfo() : none;
}

KeysLPN lowestNumbers(SakUseInfo const& use) {
  return {use.oldKeyInfo().keyLLPN(), use.latestKeyInfo().keyLLPN()};
}

}  // namespace

bool sakMatch(KeyInfo const& keyInfo, Sak const& sak) {
  return !keyInfo.isDefault() && keyInfo.keyAN() == sak.an().value() &&
         keyInfo.keyNum() == sak.keyNum() && keyInfo.keyServerMsgId() == sak.keyMsgId();
}

// IEEE 802.1X-2010, 9.12.
void MkaActorSm::parseCakDistInfo() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  auto const& info = received().mkaInfo();
  Vesk::String8 const& id = info->baseInfo().msgId();
  if (!actorStatus()->livePeer().find(id)) {
    VESK_TRACE(3, ": Peer ", id, " not in live peer list of actor ", ckn_, " on ", intfId_,
               ". Ignoring CAK dist set.");
    return;
  }
  if (info->baseInfo().sci() != actorStatus()->keyServer()) {
    VESK_TRACE(3, ": Received dist CAK from a peer ", id, " who is not a key server for actor ",
               ckn_, " on ", intfId_);
    return;
  }
  CakDistInfo const& dist = info->cakDistInfo();
  if (dist.isDefault()) {
    VESK_TRACE(3, ": No Dist CAK set found in MKPDU from peer ", id, " for actor ", ckn_, " on ",
               intfId_);
    return;
  }
  actorStatus()->distCakIs(Cak(dist.ckn(), dist.cak()));
}

// IEEE 802.1X-2010, 9.8.
void MkaActorSm::parseSakDistInfo() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  auto const& info = received().mkaInfo();
  Vesk::String8 const id = info->baseInfo().msgId();
  if (!actorStatus()->livePeer().find(id)) {
    VESK_TRACE(3, ": Peer ", id, " not in live peer list of actor ", ckn_, " on ", intfId_,
               ". Ignoring SAK dist set.");
    return;
  }
  if (info->baseInfo().sci() != actorStatus()->keyServer()) {
    VESK_TRACE(3, ": Received dist SAK from a peer ", id, " who is not a key server for actor ",
               ckn_, " on ", intfId_);
    return;
  }
  SakDistInfo const& dist = info->sakDistInfo();
  if (dist.isDefault()) {
    VESK_TRACE(3, ": No Dist SAK set found in MKPDU from peer ", id, " for actor ", ckn_, " on ",
               intfId_);
    return;
  }
  if (dist.cipherSuite() != intfStatus_->macsecParams().cipher()) {
    VESK_TRACE(3, ": Cipher Suite mismatch from peer ", id, ". Ignoring dist SAK set for actor ",
               ckn_, " on ", intfId_);
    return;
  }
  Sak sak(AssociationNumber(dist.anAndOffset().distAN()));
  sak.keyMsgIdIs(id);
  sak.keyNumIs(dist.keyNum());
  sak.keyIs(dist.sak());
  takeSak(sak);
}

// Only member identifier and key number tell a new SAK from one that is repeated.
void MkaActorSm::takeSak(Sak const& sak) {
  Sak const& known = actorStatus()->distSak();
  if (known.keyMsgId() == sak.keyMsgId() && known.keyNum() == sak.keyNum()) return;
  VESK_TRACE(1, ": Resetting sakTransmit", "for actor ", ckn_, " on ", intfId_);
  actorStatus()->sakTransmitIs(false);
  VESK_TRACE(1, ": Installing SAK from peer ", sak.keyMsgId(), " for actor ", ckn_, " on ",
             intfId_);
  actorStatus()->distSakIs(sak);
}

// IEEE 802.1X-2010, 9.10.
void MkaActorSm::parseSakUseInfo() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  auto const& info = received().mkaInfo();
  Vesk::String8 const& id = info->baseInfo().msgId();
  SakUseInfo const& use = info->sakUseInfo();
  if (use.isDefault()) {
    VESK_TRACE(3, ": No SAK USE set present in MKPDU from peer ", id, " for actor ", ckn_, " on ",
               intfId_);
    return;
  }
  if (!actorStatus()->livePeer().find(id)) {
    VESK_TRACE(3, ": Peer ", id, " not in live peer list of actor ", ckn_, " on ", intfId_,
               ". Ignoring SAK use set.");
    return;
  }
  KeysLPN reported = lowestNumbers(use);
  applyFollowerRule(info->baseInfo(), matching(use, actorStatus()->distSak()));
  applyKeyServerRule(reported);
  bool const delayProtect = use.plainTextInfo().delayProtect();
  actorStatus()->keysLPNIs(delayProtect ? reported : KeysLPN());
  countLlpnExhaustion(use);
}

// IEEE 802.1X-2010, 9.10: a member transmits with the SAK when, and as long as, the key server
// reports that it does.
void MkaActorSm::applyFollowerRule(BasicInfo const& basic, KeyInfo const& match) {
  if (!basic.keyServer() || basic.sci() != actorStatus()->keyServer()) return;
  if (match.isDefault() || actorStatus()->electedSelf()) return;
  VESK_TRACE(1, ": Setting sakTransmit:  ", match.keyTx(), " for actor ", ckn_, " on ", intfId_);
  actorStatus()->sakTransmitIs(match.keyTx());
}

// IEEE 802.1X-2010, 9.10: the key server waits until every live peer can receive. `reported` is
// left with what the last peer looked at reports.
void MkaActorSm::applyKeyServerRule(KeysLPN& reported) {
  if (!actorStatus()->electedSelf() || actorStatus()->distSak().isDefault()) return;
  if (actorStatus()->sakTransmit()) return;
  bool const canReceive = canAllPeersReceive(reported);
  VESK_TRACE(1, ": Setting sakTransmit ", canReceive, " for actor ", ckn_, " on ", intfId_);
  actorStatus()->sakTransmitIs(canReceive);
}

bool MkaActorSm::canAllPeersReceive(KeysLPN& reported) const {
  for (MkaPeer& peer : actorStatus()->livePeer()) {
    SakUseInfo const& use = peer.sakUseInfo();
    if (use.isDefault()) return false;
    reported = lowestNumbers(use);
    if (use.latestKeyInfo().isDefault() && use.oldKeyInfo().isDefault()) return false;
    if (!matching(use, actorStatus()->distSak()).keyRx()) return false;
  }
  return true;
}

void MkaActorSm::countLlpnExhaustion(SakUseInfo const& use) {
  if (!actorStatus()->electedSelf()) return;
  uint32_t const highest = std::max(use.latestKeyInfo().keyLLPN(), use.oldKeyInfo().keyLLPN());
  if (highest < nearlyUsedUp) return;
  VESK_TRACE(1, ": LLPN exhaustion detected for actor ", ckn_, " on ", intfId_);
  actorStatus()->llpnExhaustionInc(1);
}

}  // namespace Macsec
