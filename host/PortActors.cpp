#include "host/PortActors.h"

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

}  // namespace Macsecd
