#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "lab/random/RandomScenario.h"

namespace Lab {

struct SwarmOptions {
  uint32_t runs = 1000;
  uint32_t from = 1;  ///< number of the first run; each has the next one
  uint32_t jobs = 1;  ///< processes
  /// The text of the scenario of a run, of which its number decides all.
  std::function<std::string(uint32_t number)> draw = [](uint32_t number) {
    return swarmScenario(number);
  };
  /// Names of the invariants to which a run is held; all if there is none.
  std::vector<std::string> invariants = {};
  std::string keep = ".";  ///< folder for the scenarios of runs that failed
  /// Ends the swarm early once it says so; asked between two runs. Empty for never.
  std::function<bool()> isTimeUp = {};
  /// Each process ends with its first failure, which isn't reduced.
  bool untilFailure = false;
  bool showsProgress = false;  ///< as on a terminal
};

/// A run that broke an invariant, or ended the process.
struct SwarmFailure {
  uint32_t number;
  std::string what;      ///< the invariant and how it was broken
  std::string scenario;  ///< the file that plays it
};

/// What all runs have shown together.
struct SwarmTally {
  uint32_t runs = 0;
  double seconds = 0;                     ///< of virtual time
  std::map<std::string, uint64_t> acted;  ///< how often each kind of thing was done
  std::set<std::string> states;           ///< in which ports were
  std::vector<SwarmFailure> failures;
};

/// Plays random scenarios, each drawn from its number alone, and holds them to all invariants. What
/// fails is reduced to a scenario of a few lines and kept. Returns the exit status: 0 if nothing
/// failed, 1 otherwise.
int swarm(SwarmOptions const& options, std::ostream& out);

}  // namespace Lab
