#pragma once

#include <vector>

#include "lab/judge/invariants/Calm.h"
#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class EndsAgree final : public Invariant {
 public:
  /// In seconds: how long a link must have been calm, how long a change of the key may take, and
  /// its last step.
  static constexpr double kSettled = 20, kChange = 12, kLastStep = 4;

  EndsAgree(Simulation const& simulation, Calm const& calm);

  void instantDone(double time) override;

 private:
  struct Since {
    double agreed = 0;  ///< when the ends did last
    double told = 0;    ///< when not both were told to send with one key, or they agreed
  };

  Calm const& calm_;
  std::vector<Since> wires_;
};

}  // namespace Lab
