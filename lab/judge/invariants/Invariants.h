#pragma once

#include <memory>
#include <string>
#include <vector>

#include "lab/judge/invariants/Calm.h"
#include "lab/judge/invariants/Invariant.h"

namespace Lab {

/// All invariants, for one simulation.
class Invariants {
 public:
  /// They follow the simulation from now on, which has to outlive them, and run under them.
  explicit Invariants(Simulation& simulation);

  /// Of the run, which is over: what didn't hold, by time, and at one time in the order of the
  /// invariants.
  std::vector<Breach> breaches();
  std::vector<std::unique_ptr<Invariant>> const& all() const { return all_; }

 private:
  Calm calm_;
  std::vector<std::unique_ptr<Invariant>> all_;
};

/// The names of all invariants.
std::vector<std::string> invariantNames();

}  // namespace Lab
