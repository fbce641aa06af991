#pragma once

#include "model/MkaPortStatus.h"

namespace Macsecd {

/// Whether an actor of the port has a live peer.
bool hasLivePeer(Macsec::MkaPortStatus const& port);
/// The actor whose key is in use; null if there is none.
Vesk::Ptr<Macsec::MkaActorStatus> principalOf(Macsec::MkaPortStatus const& port);

/// Whether the actor has one live peer, of another SCI than the one that these SSCIs are for.
bool hasOnlyAnotherPeer(Macsec::MkaActorStatus const& actor, Macsec::Ssci const& peerSsci);

/// Whether the peer says that it receives with this key.
bool receivesWith(Macsec::MkaPeer const& peer, Macsec::Sak const& sak);
/// Whether a live peer says that it does.
bool doesAnyReceiveWith(Macsec::MkaPortStatus const& port, Macsec::Sak const& sak);
/// Whether a live peer says that it receives with any key.
bool doesAnyReceive(Macsec::MkaPortStatus const& port);

}  // namespace Macsecd
