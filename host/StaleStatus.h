#pragma once

#include "model/Config.h"
#include "model/Status.h"

namespace Macsecd {

/// Takes away the ports whose parameters aren't those of their interface any more: a port that
/// waits without state machines stays as it was when the configuration changes. To be done before
/// the engine is enabled, which takes up the ports that it finds.
void dropStalePorts(Macsec::Status& status);

/// Takes away what the tree holds of interfaces whose profile now asks for other parameters than
/// those with which a former process left them. To be done before the state machines start, which
/// make these interfaces anew.
void dropStaleInterfaces(Macsec::Config const& config, Macsec::Status& status);

}  // namespace Macsecd
