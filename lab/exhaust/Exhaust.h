#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "lab/exhaust/SmallFaults.h"

namespace Lab {

struct ExhaustOptions {
  std::string file;  ///< a scenario
  std::vector<SmallFault> faults{kSmallFaults.begin(), kSmallFaults.end()};
  bool pairs = false;      ///< of faults, too
  uint32_t jobs = 1;       ///< processes
  std::string keep = ".";  ///< folder for the scenarios of runs that failed
};

/// Plays a scenario once for each single fault of these kinds that it offers, and once for each
/// pair of them if that is wanted. A fault behind which all goes on as without it needs no pairs.
/// Tells how many runs there were and have failed, and of the first ten what speaks against them.
/// Returns the exit status: 0 when all held, 1 when one failed, 2 when the scenario has mistakes,
/// or fails by itself.
int exhaust(ExhaustOptions const& options, std::ostream& out, std::ostream& err);

}  // namespace Lab
