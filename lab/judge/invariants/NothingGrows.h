#pragma once

#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class NothingGrows final : public Invariant {
 public:
  /// Of each port; a switch itself is allowed as much as a quarter of a port.
  struct Bounds {
    size_t values = 512;  ///< in the store
    size_t timers = 64;   ///< on the wheel
  };

  explicit NothingGrows(Simulation const& simulation) : NothingGrows(simulation, Bounds()) {}
  NothingGrows(Simulation const& simulation, Bounds const& bounds);

  void instantDone(double time) override;

 private:
  static constexpr double kBetweenLooks = 5;  // seconds

  void look(Switch const& one);

  size_t bound(Switch const& one, size_t ofPort) const {
    return ofPort * one.interfaces().size() + ofPort / 4;
  }

  Bounds const bounds_;
};

}  // namespace Lab
