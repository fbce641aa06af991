#include "host/state/HeardPeers.h"

#include "runtime/World.h"

namespace Macsecd {

void takeUpLivePeers(Macsec::Status& status) {
  double const now = Vesk::now();
  for (Macsec::MkaPortStatus& port : status.portStatus()) {
    for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
      for (Macsec::MkaPeer& peer : actor.livePeer()) {
        bool const mayHearUs = now - peer.timeStamp() <= 2.0 * status.mkaLifeTime();
        if (mayHearUs && peer.timeStamp() < now) peer.timeStampIs(now);
      }
    }
  }
}

}  // namespace Macsecd
