#pragma once

#include <string>
#include <vector>

#include "host/text/Result.h"
#include "runtime/Trace.h"

namespace Macsecd {

/// What is to be traced.
struct TraceWish {
  uint16_t levels = 0;               ///< bit n: level n; 0 for nothing
  std::vector<std::string> handles;  ///< none: all
};

/// Levels 0 to `level`.
constexpr uint16_t traceLevelsTo(unsigned level) {
  return static_cast<uint16_t>((2U << level) - 1) & Vesk::kAllTraceLevels;
}

/// Puts it into force: the handles named trace these levels, and all others nothing. A fault
/// names a handle that isn't there; then nothing has changed.
Result<> traceIs(TraceWish const& wish);

}  // namespace Macsecd
