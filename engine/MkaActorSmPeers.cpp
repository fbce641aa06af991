#include "engine/MkaActorSmReactors.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

// How a member gets onto a peer list, moves between the lists and leaves them.
//
//                     MKPDU that doesn't list us,            MKPDU that lists us
//                     or listed by another member
//     +---------+  ------------------------------>  +-----------+  ---->  +------+
//     | Unknown |                                   | Potential |         | Live |
//     +---------+  <------------------------------  +-----------+         +------+
//          ^          silent for mkaLifeTime                                 |
//          +-----------------------------------------------------------------+
//                      no MKPDU that lists us for mkaLifeTime
//
// A live member that another member lists stands on both lists until its own next MKPDU.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

Vesk::LogHandle const MKA_SESSION_ESTABLISHED(
    "MKA_SESSION_ESTABLISHED", Vesk::LogSeverity::informational,
    "MKA session established with peer SCI %s::%s and CKN %s on interface %s",
    "Peer having this SCI added to live peer list", Vesk::NoActionRequired, 120.0, 1.0);

void refresh(MkaPeer& peer, MkaInfo const& info) {
  peer.baseInfoIs(info.baseInfo());
  peer.sakUseInfoIs(info.sakUseInfo());
  peer.timeStampIs(Vesk::now());
}

}  // namespace

// The new record is told of before it is filled.
void MkaActorSm::takeLivePath(MkaInfo const& info) {
  Vesk::String8 const id = info.baseInfo().msgId();
  auto peer = actorStatus()->livePeer(id);
  if (!peer) {
    VESK_TRACE(1, ": Creating new live peer ", id, " for actor ", ckn_, " on ", intfId_);
    peer = actorStatus()->livePeerIs(id);
    Sci const& sci = info.baseInfo().sci();
    Vesk::log(MKA_SESSION_ESTABLISHED, sci.addr(), sci.portNum(), ckn_, intfId_);
  }
  refresh(*peer, info);
  if (actorStatus()->potentialPeer().find(id)) {
    VESK_TRACE(3, ": Removing ", id, " from potential peer list of actor ", ckn_, " on ", intfId_);
    actorStatus()->potentialPeerDel(id);
  }
  doUpdateKeyServer();
  doUpdateActorSuccess();
}

// A live record is neither refreshed nor demoted here: it ages out.
void MkaActorSm::takePotentialPath(MkaInfo const& info) {
  Vesk::String8 const id = info.baseInfo().msgId();
  if (actorStatus()->livePeer().find(id)) return;
  auto peer = actorStatus()->potentialPeer(id);
  if (!peer) {
    VESK_TRACE(1, ": Creating new potential peer ", id, " for actor ", ckn_, " on ", intfId_);
    peer = actorStatus()->potentialPeerIs(id);
  }
  refresh(*peer, info);
}

// IEEE 802.1X-2010, 9.4.3.
void MkaActorSm::parseLivePeerInfo() {
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  for (auto& listed : received().livePeer()) {
    Vesk::String8 const id = listed.fwkKey();
    if (id == actorStatus()->msgId()) continue;
    auto peer = actorStatus()->potentialPeer(id);
    if (!peer) {
      VESK_TRACE(3, ": Adding new potential peer ", id, " for actor ", ckn_, " on ", intfId_);
      peer = actorStatus()->potentialPeerIs(id);
    }
    BasicInfo basic;
    basic.msgNumIs(listed.value());
    peer->baseInfoIs(basic);
    peer->timeStampIs(Vesk::now());
  }
}

bool MkaActorSm::hasAgedOut(MkaPeer const& peer, double now) const {
  return now > peer.timeStamp() && now - peer.timeStamp() > status_->mkaLifeTime();
}

// IEEE 802.1X-2010, 9.4.3.
void MkaActorSm::handlePeerReview() {
  if (!initialized_) return;
  VESK_TRACE(8, ": Actor ", ckn_, " on ", intfId_);
  double const now = Vesk::now();
  for (auto i = actorStatus()->livePeer().iterator(); i; ++i) {
    if (!hasAgedOut(*i, now)) continue;
    VESK_TRACE(1, ": Peer ", i->msgId(), " aged out from live peer list for actor ", ckn_, " on ",
               intfId_);
    actorStatus()->livePeerDel(i);
  }
  for (auto i = actorStatus()->potentialPeer().iterator(); i; ++i) {
    if (!hasAgedOut(*i, now)) continue;
    VESK_TRACE(1, ": Peer ", i->msgId(), " aged out from potential peer list for actor ", ckn_,
               " on ", intfId_);
    actorStatus()->potentialPeerDel(i);
  }
  doUpdateActorSuccess();
}

}  // namespace Macsec
