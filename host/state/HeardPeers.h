#pragma once

#include "model/Status.h"

namespace Macsecd {

/// Nobody listened while the process was away. Lets the live peers that were heard up to two life
/// times ago count as heard now; who was heard before that has taken this end for lost. To be done
/// before the engine is enabled, which takes who is silent for a life time off its lists at once,
/// and with the last one the principal actor: the key that is being changed at that moment would
/// never be gone over to.
void takeUpLivePeers(Macsec::Status& status);

}  // namespace Macsecd
