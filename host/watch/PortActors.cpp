#include "host/watch/PortActors.h"

#include "engine/MkaActorSm.h"
#include "model/MkaActorStatus.h"

namespace Macsecd {

bool hasLivePeer(Macsec::MkaPortStatus const& port) {
  for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
    if (!actor.livePeer().empty()) return true;
  }
  return false;
}

Vesk::Ptr<Macsec::MkaActorStatus> principalOf(Macsec::MkaPortStatus const& port) {
  for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
    if (actor.principal()) return &actor;
  }
  return nullptr;
}

// Who the peer is stands there a moment after it is listed.
bool hasOnlyAnotherPeer(Macsec::MkaActorStatus const& actor, Macsec::Ssci const& peerSsci) {
  if (actor.livePeer().members() != 1 || peerSsci == Macsec::Ssci()) return false;
  Macsec::Sci const& sci = actor.livePeer().begin()->baseInfo().sci();
  return sci != Macsec::Sci() && sci != peerSsci.sci();
}

bool receivesWith(Macsec::MkaPeer const& peer, Macsec::Sak const& sak) {
  Macsec::SakUseInfo const& use = peer.sakUseInfo();
  return (use.latestKeyInfo().keyRx() && sakMatch(use.latestKeyInfo(), sak)) ||
         (use.oldKeyInfo().keyRx() && sakMatch(use.oldKeyInfo(), sak));
}

bool doesAnyReceiveWith(Macsec::MkaPortStatus const& port, Macsec::Sak const& sak) {
  for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
    for (Macsec::MkaPeer& peer : actor.livePeer()) {
      if (receivesWith(peer, sak)) return true;
    }
  }
  return false;
}

bool doesAnyReceive(Macsec::MkaPortStatus const& port) {
  for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
    for (Macsec::MkaPeer& peer : actor.livePeer()) {
      Macsec::SakUseInfo const& use = peer.sakUseInfo();
      if (use.latestKeyInfo().keyRx() || use.oldKeyInfo().keyRx()) return true;
    }
  }
  return false;
}

}  // namespace Macsecd
