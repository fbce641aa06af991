#pragma once

#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class StoreHoldsTree final : public Invariant {
 public:
  explicit StoreHoldsTree(Simulation const& simulation)
      : Invariant(simulation, "store-holds-tree",
                  "What a switch keeps rebuilds the tree that it has.") {}

  void instantDone(double time) override;
  void ended() override;

 private:
  static constexpr double kBetweenLooks = 10;  // seconds

  void look(Switch& one);
};

}  // namespace Lab
