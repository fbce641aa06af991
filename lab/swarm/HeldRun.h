#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "lab/judge/invariants/Invariant.h"
#include "lab/scenario/Scenario.h"

namespace Lab {

/// A run that was held to invariants.
struct HeldRun {
  std::vector<Breach> breaches;
  double seconds = 0;                     ///< of virtual time
  std::map<std::string, uint64_t> acted;  ///< what was done, by the first word of its line
  std::set<std::string> states;           ///< in which ports were: stages, passage and first cause
};

/// Plays it with its own seed, which it must have, and holds it to the invariants of these names;
/// to all if there is none.
HeldRun playHeld(Scenario const& scenario, std::vector<std::string> const& names = {});

}  // namespace Lab
