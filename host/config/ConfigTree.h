#pragma once

#include "host/config/ConfigFile.h"
#include "model/Config.h"

namespace Macsecd {

/// Makes the configuration tree say what the file says. What the file doesn't change isn't written,
/// also if a key stands there in another encoding or letter case. An interface goes from what it
/// had to what the file gives it in one step, and its port stays, unless the cipher suite or the
/// SCI in the SecTAG changes. What may end the process comes last, shutting down first. The tree is
/// one that only this function writes. Costs time in proportion to the file.
void writeConfig(SwitchConfig const& from, Macsec::Config& to);

}  // namespace Macsecd
