#include "host/control/TraceWish.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text/Diagnostic.h"

namespace Macsecd {

Result<> traceIs(TraceWish const& wish) {
  std::vector<std::string> const known = Vesk::TraceHandle::names();
  for (std::string const& name : wish.handles) {
    if (std::ranges::find(known, name) != known.end()) continue;
    return Fault{fmt::format("there is no trace handle {}", quotedWord(name)),
                 remedyForUnknown(name, known)};
  }
  Vesk::TraceHandle::streamLevelsIs("", wish.handles.empty() ? wish.levels : 0);
  for (std::string const& name : wish.handles) {
    Vesk::TraceHandle::streamLevelsIs(name, wish.levels);
  }
  return {};
}

}  // namespace Macsecd
