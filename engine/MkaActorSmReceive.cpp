#include "engine/MkaActorSmReactors.h"
#include "runtime/Trace.h"

// The entry of every received MKPDU into an actor, and its gate.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

}  // namespace

// IEEE 802.1X-2010, 9.4.
void MkaActorSm::handleRxMessage() {
  MkaMessageInfo const& rx = received();
  if (rx.intfId() != intfId_) return;
  if (rx.mkaInfo()->baseInfo().ckn() != ckn_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  if (!parseBasicInfo()) return;
  parseLivePeerInfo();
  parseCakDistInfo();
  parseSakDistInfo();
  parseSakUseInfo();
}

bool MkaActorSm::parseBasicInfo() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  MkaMessageInfo const& rx = received();
  auto const info = rx.mkaInfo();
  if (info->baseInfo().sci() == portStatus_->mySci()) {
    VESK_TRACE(3, ": Duplicate SCI detected in incoming MKPDU for actor ", ckn_, " on ", intfId_);
    return false;
  }
  if (info->baseInfo().msgId() == actorStatus()->msgId()) {
    VESK_TRACE(3, ": Message ID collision detected for actor ", ckn_, " on ", intfId_);
    updateMsgId();
  }
  bool const isHeard = isListed(rx.livePeer(), "live") || isListed(rx.potentialPeer(), "potential");
  if (isHeard) {
    takeLivePath(*info);
  } else {
    takePotentialPath(*info);
  }
  return true;
}

// IEEE 802.1X-2010, 9.4.3: who lists a late message number of ours is live.
bool MkaActorSm::isListed(MkaMessageInfo::LivePeerMap const& peers, char const* where) const {
  uint32_t const* listedNumber = peers[actorStatus()->msgId()];
  if (!listedNumber || !isAcceptable(*listedNumber)) return false;
  VESK_TRACE(3, ": My MN detected in peer's ", std::string_view(where), " peer list for actor ",
             ckn_, " on ", intfId_);
  return true;
}

// myMN - threshold <= listed <= myMN, in 64 bits, so that nothing wraps.
bool MkaActorSm::isAcceptable(uint32_t listedNumber) const {
  int64_t const mine = actorStatus()->msgNum();
  int64_t const listed = listedNumber;
  return mine - status_->mkpduThreshold() <= listed && listed <= mine;
}

}  // namespace Macsec
