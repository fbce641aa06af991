#pragma once

#include "host/explain/Explain.h"
#include "host/port/PortSummary.h"
#include "host/text/Diagnostic.h"
#include "host/text/JsonText.h"

namespace Macsecd {

// What is told of a switch, as JSON. Members are named in kebab-case; what isn't known is null.

Json jsonOf(PortSummary const& port);
Json jsonOf(PortStages const& stages);
Json jsonOf(Explanation const& explanation);
Json jsonOf(Diagnostic const& diagnostic);
/// The counters that aren't 0, by kind; `sinceClear`: only what was counted since they were
/// cleared.
Json jsonOf(Macsec::Brine::InterfaceCounters const& counters, bool sinceClear = false);

}  // namespace Macsecd
