#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/text/Diagnostic.h"

namespace Lab {

/// What has happened to a switch since the start of the simulation.
struct SwitchRecord {
  std::vector<int> exits;  ///< the status of each process that ended itself
  uint64_t writes = 0;     ///< attributes written in all its trees
  uint64_t configurationWrites = 0;
  uint64_t refusedWrites = 0;  ///< attributes but counters, because of frames that were refused
  /// Of the last reload; nothing when there was none.
  std::optional<std::vector<Macsecd::Diagnostic>> reloadDiagnostics;
};

}  // namespace Lab
