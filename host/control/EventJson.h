#pragma once

#include <span>

#include "host/control/ControlJson.h"
#include "host/port/PortEvent.h"
#include "host/watch/HostTap.h"

namespace Macsecd {

// The lines that a subscriber gets, as JSON: each has `version`, `time`, `interface` and `event`.

Json jsonOf(PortEvent const& event);
/// A frame that passes now; its `octets` in hexadecimal.
Json frameJson(Lumo::IntfId intfId, FrameWay way, std::span<uint8_t const> frame);

}  // namespace Macsecd
