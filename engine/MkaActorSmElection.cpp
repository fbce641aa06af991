#include "engine/MkaActorSmReactors.h"
#include "runtime/Trace.h"

// The key server election: made again from nothing at every MKPDU of a live peer, with no bonus for
// who holds the role.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

// Null if neither wins.
BasicInfo const* winnerOf(BasicInfo const& a, BasicInfo const& b) {
  if (a.keyServerPriority() != b.keyServerPriority()) {
    return a.keyServerPriority() < b.keyServerPriority() ? &a : &b;
  }
  if (a.sci().addr() == b.sci().addr()) return nullptr;
  return a.sci().addr() < b.sci().addr() ? &a : &b;
}

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
  BasicInfo const* const winner = winnerOf(a->baseInfo(), b->baseInfo());
  if (!winner) return nullptr;
  return winner == &a->baseInfo() ? a : b;
}

BasicInfo MkaActorSm::selfCandidate() const {
  BasicInfo mine;
  mine.keyServerPriorityIs(getKeyServerPriority());
  mine.sciIs(portStatus_->mySci());
  return mine;
}

// IEEE 802.1X-2010, 9.5.
void MkaActorSm::doUpdateKeyServer() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  Vesk::Ptr<MkaPeer const> const best(bestClaimingPeer(actorStatus()->livePeer()));
  BasicInfo const self = selfCandidate();
  BasicInfo const* winner = best ? &best->baseInfo() : nullptr;
  if (mayBeKeyServer()) winner = winner ? winnerOf(*winner, self) : &self;
  Vesk::String8 const& ownId = actorStatus()->msgId();
  Vesk::String8 const& electedId = winner && winner != &self ? best->msgId() : ownId;
  bool const electedSelf = mayBeKeyServer() && winner && electedId == ownId;
  actorStatus()->electedSelfIs(electedSelf);
  VESK_TRACE(1, ": Elected self is: ", electedSelf, " for actor ", ckn_, " on ", intfId_);
  if (winner) {
    VESK_TRACE(1, ": Elected ", electedId, " as key server for actor ", ckn_, " on ", intfId_);
    actorStatus()->keyServerIs(winner->sci());
  } else {
    VESK_TRACE(1, ": Unable to elect key server for actor ", ckn_, " on ", intfId_);
    actorStatus()->keyServerIs(Sci());
  }
}

}  // namespace Macsec
