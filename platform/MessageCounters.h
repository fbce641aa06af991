#pragma once

#include "runtime/IntfId.h"
#include "runtime/PtrInterface.h"

namespace Macsec::Brine {

/// The message counters of all interfaces, which the packet path keeps and the management layer
/// reads. Held by `ConfigSm`, which takes snapshots of it on request.
class MessageCounters : public Vesk::PtrInterface {};

}  // namespace Macsec::Brine
