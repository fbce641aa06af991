#pragma once

#include "lab/judge/invariants/Invariant.h"
#include "lab/judge/invariants/StoreTurns.h"

namespace Lab {

class StoreHoldsTree final : public Invariant {
 public:
  explicit StoreHoldsTree(Simulation const& simulation)
      : Invariant(simulation, "store-holds-tree",
                  "What a switch keeps rebuilds the tree that it has, and nothing else."),
        turns_(simulation) {}

  void instantDone(double time) override;
  void ended() override;

 private:
  static constexpr double kBetweenLooks = 10;  // seconds

  void look(Switch& one);

  StoreTurns turns_;
};

}  // namespace Lab
