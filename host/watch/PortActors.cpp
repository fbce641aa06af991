#include "host/watch/PortActors.h"

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

}  // namespace Macsecd
