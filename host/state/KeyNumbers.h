#pragma once

#include "host/state/KeyHistory.h"
#include "model/Status.h"

namespace Macsecd {

/// A process that dies between two commits may leave a history that knows a SAK which the tree
/// doesn't. Has each actor number its next SAK behind all of its own in the history: one with a
/// number that was there would be taken for the former one, and for spent if that was.
void numberKeysOn(KeyHistory const& history, Macsec::Status& status);

}  // namespace Macsecd
