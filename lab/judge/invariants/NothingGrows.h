#pragma once

#include <map>
#include <string>

#include "lab/judge/invariants/Invariant.h"

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
  static constexpr double kBetweenLooks = 5, kNextTurn = 3;  // seconds

  void look(Switch const& one);
  bool hasTakenAll(Switch const& one) const;
  void demand(Switch const& one, size_t found, Bound const& bound, char const* what);

  Bounds const bounds_;
  std::map<std::string, double> refused_;  ///< by switch, when its store didn't take all
};

}  // namespace Lab
