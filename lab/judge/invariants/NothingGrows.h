#pragma once

#include "lab/judge/invariants/Invariant.h"
#include "lab/judge/invariants/StoreTurns.h"

namespace Lab {

class NothingGrows final : public Invariant {
 public:
  /// What a switch may have by itself, for each of its interfaces, ports, actors and peers.
  struct Bound {
    size_t self, interface, port, actor, peer;
  };
  struct Bounds {
    Bound values{8, 6, 36, 12, 8};  ///< of the status tree, in the store
    Bound keys{4, 16, 0, 0, 0};     ///< in the store: the key servers that a run can have had
    Bound timers{4, 1, 3, 4, 1};    ///< on the wheel
  };

  explicit NothingGrows(Simulation const& simulation) : NothingGrows(simulation, Bounds()) {}
  NothingGrows(Simulation const& simulation, Bounds const& bounds);

  void instantDone(double time) override;
  void ended() override;

 private:
  static constexpr double kBetweenLooks = 5;  // seconds

  void look(Switch const& one);
  void demand(Switch const& one, size_t found, Bound const& bound, char const* what);

  Bounds const bounds_;
  StoreTurns turns_;
};

}  // namespace Lab
