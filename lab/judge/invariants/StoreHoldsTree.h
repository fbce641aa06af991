#pragma once

#include <map>

#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class StoreHoldsTree final : public Invariant {
 public:
  explicit StoreHoldsTree(Simulation const& simulation)
      : Invariant(simulation, "store-holds-tree",
                  "What a switch keeps rebuilds the tree that it has, and nothing else.") {}

  void instantDone(double time) override;
  void ended() override;

 private:
  // In seconds. What a store has refused is given to it again at the end of the next turn.
  static constexpr double kBetweenLooks = 10, kNextTurn = 3;

  /// Whether the process has had a turn since its store refused.
  bool hasCommitted(Switch const& one) const;
  void look(Switch& one);

  std::map<std::string, double> refused_;  ///< by switch, when what it had refused still waited
};

}  // namespace Lab
