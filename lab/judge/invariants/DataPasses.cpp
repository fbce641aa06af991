#include "lab/judge/invariants/DataPasses.h"

#include <fmt/format.h>

namespace Lab {

DataPasses::DataPasses(Simulation const& simulation, Calm const& calm)
    : Invariant(simulation, "data-passes",
                fmt::format(
                    "An open port has a key to send with. Between two of them with a key in use "
                    "frames of data come within {} seconds, both ways, unless a fault prevents it.",
                    kLongest)),
      calm_(calm) {}

void DataPasses::dataSent(double, DataSent const& sent) {
  if (sent.frame.empty()) breaks(sent.from.text() + " is open and has no key to send with");
}

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
    bool const isMeant = link->isInUse() && calm_.of(wire) >= kSettled;
    look(isMeant, link->a, link->b);
    look(isMeant, link->b, link->a);
  }
}

void DataPasses::look(bool isMeant, LinkEnd const& from, LinkEnd const& to) {
  double& passed = passed_[{from.name, to.name}];
  if (!isMeant) passed = now();
  if (now() - passed <= kLongest + *simulation().scenario().dataEvery) return;
  breaks(
      fmt::format("{} and {} are open, and nothing has come from the first to the second for {} "
                  "seconds",
                  from.name.text(), to.name.text(), kLongest));
}

}  // namespace Lab
