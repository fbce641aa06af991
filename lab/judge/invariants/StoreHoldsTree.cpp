#include "lab/judge/invariants/StoreHoldsTree.h"

#include <algorithm>
#include <sstream>

#include "host/state/SilentWorld.h"
#include "host/state/StateTree.h"

namespace Lab {

namespace {

// Members may stand in another order. That the process runs in FIPS mode isn't the next one's.
std::vector<std::string> linesOf(Macsec::Status const& status) {
  std::istringstream text(Vesk::entityToText(status));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    if (!line.starts_with("fipsStatus")) lines.push_back(line);
  }
  std::ranges::sort(lines);
  return lines;
}

// What isn't of the tree has paths of its own.
Macsecd::StateValues treeIn(MemoryStore const& store) {
  Macsecd::StateValues values = store.values();
  std::erase_if(values, [](auto const& entry) { return entry.first.starts_with("%"); });
  return values;
}

}  // namespace

void StoreHoldsTree::instantDone(double time) {
  if (!isDue(time, kBetweenLooks)) return;
  ended();
}

void StoreHoldsTree::ended() {
  for (auto const& one : simulation().switches()) {
    if (one->isStarted()) look(*one);
  }
}

void StoreHoldsTree::look(Switch& one) {
  Macsecd::SilentWorld world(one.world());
  Vesk::WorldScope const scope(world);
  auto const rebuilt = Macsecd::rebuiltStatus("status", treeIn(one.store()));
  for (auto const& dropped : rebuilt.dropped) breaks(one.name() + " can't take up " + dropped.path);
  auto const is = linesOf(*one.host().status()), kept = linesOf(*rebuilt.status);
  std::vector<std::string> lost;
  std::ranges::set_difference(is, kept, std::back_inserter(lost));
  if (!lost.empty()) breaks(one.name() + " doesn't keep " + lost.front());
}

}  // namespace Lab
