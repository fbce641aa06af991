#include "engine/MkaActorSmReactors.h"
#include "runtime/Trace.h"

// The key server election: made again from nothing at every MKPDU of a live peer, with no bonus for
// who holds the role.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

// A tie removes both, and the next peer that claims the role is taken unopposed.
MkaPeer const* bestClaimingPeer(MkaActorStatus::LivePeerMap const& livePeer) {
  MkaPeer const* best = nullptr;
  for (MkaPeer& peer : livePeer) {
    if (!peer.baseInfo().keyServer()) continue;
    best = best ? electKeyServer(best, &peer) : &peer;
  }
  return best;
}

}  // namespace

MkaPeer const* electKeyServer(MkaPeer const* a, MkaPeer const* b) {
  BasicInfo const& first = a->baseInfo();
  BasicInfo const& second = b->baseInfo();
  if (first.keyServerPriority() != second.keyServerPriority()) {
    return first.keyServerPriority() < second.keyServerPriority() ? a : b;
  }
  if (first.sci().addr() == second.sci().addr()) return nullptr;
  return first.sci().addr() < second.sci().addr() ? a : b;
}

// Stands on no list. It is made again only for another identity.
Vesk::Ptr<MkaPeer const> MkaActorSm::selfCandidate() {
  Vesk::String8 const& msgId = actorStatus()->msgId();
  if (!selfCandidate_ || selfCandidate_->msgId() != msgId) {
    selfCandidate_ = Vesk::make<MkaPeer>(msgId);
  }
  BasicInfo mine;
  mine.keyServerPriorityIs(getKeyServerPriority());
  mine.sciIs(portStatus_->mySci());
  selfCandidate_->baseInfoIs(mine);
  return selfCandidate_;
}

// IEEE 802.1X-2010, 9.5.
void MkaActorSm::doUpdateKeyServer() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  MkaPeer const* best = bestClaimingPeer(actorStatus()->livePeer());
  Vesk::Ptr<MkaPeer const> const self = selfCandidate();
  if (mayBeKeyServer()) best = best ? electKeyServer(best, self.ptr()) : self.ptr();
  bool const electedSelf = mayBeKeyServer() && best && best->msgId() == actorStatus()->msgId();
  Vesk::Ptr<MkaPeer const> const elected(best);
  actorStatus()->electedSelfIs(electedSelf);
  VESK_TRACE(1, ": Elected self is: ", electedSelf, " for actor ", ckn_, " on ", intfId_);
  if (elected) {
    VESK_TRACE(1, ": Elected ", elected->msgId(), " as key server for actor ", ckn_, " on ",
               intfId_);
    actorStatus()->keyServerIs(elected->baseInfo().sci());
  } else {
    VESK_TRACE(1, ": Unable to elect key server for actor ", ckn_, " on ", intfId_);
    actorStatus()->keyServerIs(Sci());
  }
}

}  // namespace Macsec
