#pragma once

#include "host/ConfigFile.h"
#include "model/Config.h"

namespace Macsecd {

/// Makes the configuration tree say what the file says, with the fewest writes: an unchanged key,
/// also in another encoding or letter case, writes nothing, a port whose interface moves to a
/// profile of the same parameters stays, and a profile that is gone is deleted only after its
/// interfaces have moved. What may end the process comes last, shutting down first. The tree is one
/// that only this function writes.
void writeConfig(SwitchConfig const& from, Macsec::Config& to);

}  // namespace Macsecd
