#pragma once

#include "model/MkaActorStatus.h"
#include "model/ParameterSets.h"

namespace Codec {

/// Lowers the packet numbers in a peer's report that this key server has answered already.
///
/// A peer whose key is nearly used up says so in every MKPDU until it transmits with another one,
/// and each such report makes the key server distribute a new SAK. But a new SAK puts off the
/// moment at which the peer goes over to the one before: with one in each period it would stay with
/// its key for ever, long after this end has left it. So a report counts only of the SAK that
/// `actor` distributes now; of any other key it is lowered below `nearlyUsedUp`. Does nothing
/// unless `actor` is the elected key server and distributes a SAK.
void lowerAnswered(Macsec::SakUseInfo& report, Macsec::MkaActorStatus const& actor);

}  // namespace Codec
