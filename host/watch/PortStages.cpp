#include "host/watch/PortStages.h"

namespace Macsecd {

using Macsec::MkaActorStatus;
using Macsec::MkaPeer;

PortStages stagesOf(Macsec::Status const& status, Lumo::IntfId intfId,
                    Macsec::MkaKeyServerSm const* keyServer) {
  PortStages stages;
  if (auto const cpStatus = status.cpStatus(intfId)) stages.key = Macsec::stageOf(*cpStatus);
  if (keyServer) stages.guard = Macsec::stageOf(*keyServer);
  auto const port = status.portStatus(intfId);
  if (!port) return stages;
  for (MkaActorStatus& actor : port->actorStatus()) {
    auto const note = [&](MkaPeer const& peer) {
      stages.members[{actor.ckn(), peer.msgId()}] = Macsec::stageOf(actor, peer.msgId());
    };
    for (MkaPeer& peer : actor.potentialPeer()) note(peer);
    for (MkaPeer& peer : actor.livePeer()) note(peer);
  }
  return stages;
}

}  // namespace Macsecd
