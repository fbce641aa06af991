#include "engine/MkaActorSmReactors.h"
#include "runtime/Trace.h"

// The key server election: made again from nothing at every MKPDU of a live peer, with no bonus for
// who holds the role.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

enum class Winner { first, second, none };

Winner winnerOf(BasicInfo const& first, BasicInfo const& second) {
  if (first.keyServerPriority() != second.keyServerPriority()) {
    return first.keyServerPriority() < second.keyServerPriority() ? Winner::first : Winner::second;
  }
  if (first.sci().addr() == second.sci().addr()) return Winner::none;
  return first.sci().addr() < second.sci().addr() ? Winner::first : Winner::second;
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
  switch (winnerOf(a->baseInfo(), b->baseInfo())) {
    case Winner::first:
      return a;
    case Winner::second:
      return b;
    case Winner::none:
      return nullptr;
  }
  return nullptr;
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
  Vesk::Ptr<MkaPeer const> best(bestClaimingPeer(actorStatus()->livePeer()));
  BasicInfo const self = selfCandidate();
  Vesk::String8 const ownId = actorStatus()->msgId();
  bool electedSelf = mayBeKeyServer() && !best;
  if (mayBeKeyServer() && best) {
    Winner const winner = winnerOf(best->baseInfo(), self);
    electedSelf = winner == Winner::second || (winner == Winner::first && best->msgId() == ownId);
    if (winner != Winner::first) best = nullptr;
  }
  actorStatus()->electedSelfIs(electedSelf);
  VESK_TRACE(1, ": Elected self is: ", electedSelf, " for actor ", ckn_, " on ", intfId_);
  if (best || electedSelf) {
    VESK_TRACE(1, ": Elected ", best ? best->msgId() : ownId, " as key server for actor ", ckn_,
               " on ", intfId_);
    actorStatus()->keyServerIs(best ? best->baseInfo().sci() : self.sci());
  } else {
    VESK_TRACE(1, ": Unable to elect key server for actor ", ckn_, " on ", intfId_);
    actorStatus()->keyServerIs(Sci());
  }
}

}  // namespace Macsec
