#include "lab/judge/invariants/DataPasses.h"

#include <fmt/format.h>

namespace Lab {

DataPasses::DataPasses(Simulation const& simulation, Calm const& calm)
    : Invariant(simulation, "data-passes",
                fmt::format("Between two open ports frames of data come within {} seconds, both "
                            "ways, unless a fault prevents it.",
                            kSettled)),
      calm_(calm) {}

void DataPasses::dataArrived(double time, DataArrived const& arrived) {
  if (arrived.verdict == SecY::Verdict::valid && arrived.isSame) {
    passed_[{arrived.from, arrived.to}] = time;
  }
}

void DataPasses::instantDone(double time) {
  auto const& scenario = simulation().scenario();
  if (!scenario.dataEvery || !isDue(time, kBetweenLooks)) return;
  for (size_t wire = 0; wire < scenario.wires.size(); ++wire) {
    auto const link = linkOf(simulation(), wire);
    if (!link) continue;
    look(wire, link->a, link->b);
    look(wire, link->b, link->a);
  }
}

void DataPasses::look(size_t wire, LinkEnd const& from, LinkEnd const& to) {
  double& passed = passed_[{from.name, to.name}];
  if (!from.passes() || !to.passes() || calm_.of(wire) < kSettled) passed = now();
  if (now() - passed <= kSettled + *simulation().scenario().dataEvery) return;
  breaks(
      fmt::format("{} and {} are open, and nothing has come from the first to the second for {} "
                  "seconds",
                  from.name.text(), to.name.text(), kSettled));
}

}  // namespace Lab
