#pragma once

#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class NothingInClear final : public Invariant {
 public:
  explicit NothingInClear(Simulation const& simulation)
      : Invariant(simulation, "nothing-in-clear",
                  "No frame of data leaves a port in clear, and none is taken in clear.") {}

  void dataSent(double time, DataSent const& sent) override;
  void dataArrived(double time, DataArrived const& arrived) override;
};

}  // namespace Lab
