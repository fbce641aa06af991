#include "lab/judge/invariants/StoreTurns.h"

namespace Lab {

// A process that stands still has no turn.
void StoreTurns::instantDone(double time) {
  for (auto const& one : simulation_.switches()) {
    bool const waits = one->isStandingStill() && !hasAll(*one);
    if (one->store().refuses() || waits) refused_[one->name()] = time;
  }
}

bool StoreTurns::hasAll(Switch const& one) const {
  auto const refused = refused_.find(one.name());
  return refused == refused_.end() || simulation_.now() - refused->second > kNextTurn;
}

}  // namespace Lab
