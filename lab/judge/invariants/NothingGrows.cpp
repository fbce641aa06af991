#include "lab/judge/invariants/NothingGrows.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/state/KeyHistory.h"

namespace Lab {

namespace {

size_t allowed(Switch const& one, NothingGrows::Bound const& bound) {
  size_t most = bound.self + bound.interface * one.interfaces().size();
  for (Macsec::MkaPortStatus& port : one.host().status()->portStatus()) {
    most += bound.port;
    for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
      size_t const peers = actor.livePeer().members() + actor.potentialPeer().members();
      most += bound.actor + bound.peer * peers;
    }
  }
  return most;
}

}  // namespace

NothingGrows::NothingGrows(Simulation const& simulation, Bounds const& bounds)
    : Invariant(simulation, "nothing-grows",
                "What a switch keeps, and its timers, are bounded by the interfaces, ports, actors "
                "and peers that it has."),
      bounds_(bounds),
      turns_(simulation) {}

void NothingGrows::instantDone(double time) {
  turns_.instantDone(time);
  if (isDue(time, kBetweenLooks)) ended();
}

void NothingGrows::ended() {
  for (auto const& one : simulation().switches()) look(*one);
}

void NothingGrows::look(Switch const& one) {
  if (!one.status()) return;
  demand(one, one.host().timerWheel()->armed(), bounds_.timers, "timers");
  if (!turns_.hasAll(one)) return;
  auto const& values = one.store().values();
  auto const isOfKey = [](auto const& entry) {
    return entry.first.starts_with(Macsecd::KeyHistory::kPathBegin);
  };
  auto const keys = static_cast<size_t>(std::ranges::count_if(values, isOfKey));
  demand(one, values.size() - keys, bounds_.values, "values of its status");
  demand(one, keys, bounds_.keys, "key servers");
}

void NothingGrows::demand(Switch const& one, size_t found, Bound const& bound, char const* what) {
  if (size_t const most = allowed(one, bound); found > most) {
    breaks(fmt::format("{} has {} {}, where {} are allowed", one.name(), found, what, most));
  }
}

}  // namespace Lab
