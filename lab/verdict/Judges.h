#pragma once

#include <optional>
#include <string>
#include <vector>

#include "lab/judge/DataLoss.h"
#include "lab/judge/Expectations.h"
#include "lab/judge/invariants/Invariants.h"

namespace Lab {

/// All that judges a run: expectations, nonces, frames of data, invariants.
class Judges {
 public:
  /// Why a run failed: in a few words, and in a line for each finding.
  struct Verdict {
    std::string what;
    std::vector<std::string> findings;
  };

  /// Takes its seats in the simulation, which has to outlive it.
  explicit Judges(Simulation& simulation);

  size_t expectations() const { return expectations_.size(); }
  /// When the run is over: the first that speaks against it; nothing if none does.
  std::optional<Verdict> verdict();

 private:
  Simulation& simulation_;
  Expectations expectations_;
  DataLoss dataLoss_;
  std::optional<Invariants> invariants_;
};

}  // namespace Lab
