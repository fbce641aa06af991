#pragma once

#include <vector>

#include "lab/judge/invariants/Calm.h"
#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class SecuredInTheEnd final : public Invariant {
 public:
  /// So many seconds may pass after the last fault and the last action.
  static constexpr double kBound = 60;

  SecuredInTheEnd(Simulation const& simulation, Calm const& calm);

  void ended() override;

 private:
  Calm const& calm_;
};

}  // namespace Lab
