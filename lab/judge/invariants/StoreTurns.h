#pragma once

#include <map>
#include <string>

#include "lab/world/Simulation.h"

namespace Lab {

/// What a store has refused is given to it again at the end of the next turn of the process: until
/// then what a switch keeps isn't what it is.
class StoreTurns {
 public:
  explicit StoreTurns(Simulation const& simulation) : simulation_(simulation) {}

  void instantDone(double time);
  /// Whether the store of this switch has all that was given to it.
  bool hasAll(Switch const& one) const;

 private:
  static constexpr double kNextTurn = 3;  // seconds

  Simulation const& simulation_;
  std::map<std::string, double> refused_;  ///< by switch, when what it had refused still waited
};

}  // namespace Lab
