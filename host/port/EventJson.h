#pragma once

#include <string>

#include "host/port/PortEvent.h"
#include "host/text/JsonText.h"
#include "host/watch/HostTap.h"

namespace Macsecd {

// Events as JSON. What stands in front, the `head`, tells when, and where there are several
// switches, at which of them.

/// The head, `interface` unless it is empty, and `event`; the members of the kind are to follow.
Json eventJson(Json head, std::string const& interface, EventKind kind);
/// An event of a port.
Json eventJson(Json head, PortEvent const& event);
/// A frame that passes, and its `way`; what is known of it is to follow.
Json frameJson(Json head, std::string const& interface, FrameWay way);

}  // namespace Macsecd
