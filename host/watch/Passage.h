#pragma once

#include <cstdint>

#include "host/watch/HardwareReport.h"
#include "model/Status.h"
#include "platform/IntfForwardingModel.h"
#include "runtime/Dir.h"

namespace Macsecd {

/// Whether traffic may pass on a port, under protection and both ways; if not, what keeps it from
/// passing, the first of these that does.
enum class Passage : uint8_t {
  open,
  noPort,         ///< there is none on the interface
  notAgreed,      ///< the controlled port is closed
  transmitHeld,   ///< `TransmitHold`
  peersLost,      ///< `PeerLoss`
  unauthorized,   ///< forwarding hasn't heard yet that the controlled port is open
  deviceAbsent,   ///< the hardware has no device for the port
  deviceDown,     ///< somebody has set it down
  deviceDormant,  ///< it still shows that nothing may pass
  noTransmitSa,   ///< the hardware sends nothing
  noReceiveSa,    ///< the hardware takes nothing in
};

/// All that decides on it.
struct PassageInputs {
  Macsec::Status const& status;
  Interface::IntfForwardingModelInputDir const& forwarding;
  Interface::IntfForwardingModelInputDir const& peerLoss;
  Interface::IntfForwardingModelInputDir const& transmitHold;
  Vesk::Dir const& slices;  ///< each a `MacSecStatus`
};

/// This is the one place that knows when a port is open. Whatever says so to anybody asks
/// `Host::passage`, which asks here.
Passage passageOf(PassageInputs const& inputs, HardwareReport const& report, Lumo::IntfId intfId);

/// In one word: "open", "closed", or "absent" when there is no port.
char const* stateOf(Passage passage);

}  // namespace Macsecd
