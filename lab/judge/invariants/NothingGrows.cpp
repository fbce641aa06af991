#include "lab/judge/invariants/NothingGrows.h"

#include <fmt/format.h>

namespace Lab {

NothingGrows::NothingGrows(Simulation const& simulation, Bounds const& bounds)
    : Invariant(
          simulation, "nothing-grows",
          fmt::format("For each of its ports a switch keeps at most {} values and has at most {} "
                      "timers, and a quarter of that for itself.",
                      bounds.values, bounds.timers)),
      bounds_(bounds) {}

void NothingGrows::instantDone(double time) {
  if (!isDue(time, kBetweenLooks)) return;
  for (auto const& one : simulation().switches()) look(*one);
}

void NothingGrows::look(Switch const& one) {
  size_t const values = one.store().values().size();
  size_t const timers = one.host().timerWheel()->armed();
  if (values > bound(one, bounds_.values))
    breaks(fmt::format("{} keeps {} values", one.name(), values));
  if (timers > bound(one, bounds_.timers))
    breaks(fmt::format("{} has {} timers", one.name(), timers));
}

}  // namespace Lab
