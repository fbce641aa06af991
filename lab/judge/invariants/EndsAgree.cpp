#include "lab/judge/invariants/EndsAgree.h"

#include <fmt/format.h>

namespace Lab {

namespace {

// What differs between two open ends; empty if nothing does.
std::string difference(Link const& link) {
  auto const a = link.a.cpStatus(), b = link.b.cpStatus();
  if (!link.sendsWithOneKey()) return "key";
  if (a->txSak().an() != b->txSak().an()) return "association number";
  if (a->cipher() != b->cipher()) return "cipher suite";
  if (a->mySsci() != b->peerSsci() || b->mySsci() != a->peerSsci()) return "SSCI";
  return {};
}

}  // namespace

EndsAgree::EndsAgree(Simulation const& simulation, Calm const& calm)
    : Invariant(
          simulation, "ends-agree",
          fmt::format(
              "Two open ends with a key in use of a link that nothing has disturbed for {} "
              "seconds send with one key, association number, cipher suite and with the SSCIs that "
              "the other expects, but for {} seconds of a change.",
              kSettled, kChange)),
      calm_(calm),
      agreed_(simulation.scenario().wires.size(), 0) {}

void EndsAgree::instantDone(double time) {
  for (size_t wire = 0; wire < agreed_.size(); ++wire) {
    auto const link = linkOf(simulation(), wire);
    bool const isMeant = link && calm_.of(wire) >= kSettled && link->isInUse();
    std::string const differs = isMeant ? difference(*link) : std::string();
    if (differs.empty()) agreed_[wire] = time;
    if (time - agreed_[wire] <= kChange) continue;
    breaks(fmt::format("{} and {} are open with another {} each", link->a.name.text(),
                       link->b.name.text(), differs));
  }
}

}  // namespace Lab
