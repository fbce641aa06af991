#pragma once

#include "host/ConfigFile.h"
#include "model/Config.h"

namespace Macsecd {

/// Makes the configuration tree say what the file says, with the fewest writes: an unchanged key,
/// also in another letter case, writes nothing, and a profile that is gone is deleted only after
/// its interfaces have moved. The tree is one that only this function writes.
void writeConfig(SwitchConfig const& from, Macsec::Config& to);

}  // namespace Macsecd
