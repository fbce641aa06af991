#pragma once

#include <vector>

#include "lab/judge/invariants/Calm.h"
#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class EndsAgree final : public Invariant {
 public:
  /// In seconds: how long a link must have been calm, and how long a change of the key may take.
  static constexpr double kSettled = 20, kChange = 8;

  EndsAgree(Simulation const& simulation, Calm const& calm);

  void instantDone(double time) override;

 private:
  Calm const& calm_;
  std::vector<double> agreed_;  ///< when the ends of each wire did last
};

}  // namespace Lab
