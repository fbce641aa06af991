#pragma once

#include "model/Config.h"
#include "model/Status.h"
#include "platform/EthIntfStatus.h"

namespace Macsecd {

/// Takes away all ports: with MACsec off nothing of them is in force.
void dropPorts(Macsec::Status& status);

/// Takes away the ports whose interface has another SCI now (another address or port number) than
/// that under which a former process left them.
void dropMovedPorts(Interface::EthIntfStatusDir const& dir, Macsec::Status& status);

/// Takes away the pre-shared keys of the interfaces whose profile now takes its key from 802.1X:
/// what the configuration doesn't say isn't in force. The fallback key goes on if it has a peer,
/// and is in use or somebody `elects`, as running state machines do; otherwise the port begins
/// anew, so that no SAK of the former key stays in use.
void dropConfiguredKeys(Macsec::Config& config, Macsec::Status& status, bool elects);

/// Takes away the ports whose parameters aren't those of their interface. To be done before the
/// engine is enabled, which takes up the ports that it finds.
void dropStalePorts(Macsec::Status& status);

/// Takes away what the tree holds of interfaces whose profile now asks for other parameters than
/// those with which a former process left them. To be done before the state machines start, which
/// make these interfaces anew.
void dropStaleInterfaces(Macsec::Config const& config, Macsec::Status& status);

}  // namespace Macsecd
