#include "lab/judge/invariants/StoreHoldsTree.h"

#include <algorithm>
#include <sstream>

#include "host/state/SilentWorld.h"
#include "host/state/StateTree.h"

namespace Lab {

namespace {

// Members may stand in another order. That the process runs in FIPS mode isn't the next one's.
std::vector<std::string> linesOf(std::string const& tree) {
  std::istringstream text(tree);
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    if (!line.starts_with("fipsStatus")) lines.push_back(line);
  }
  std::ranges::sort(lines);
  return lines;
}

// The first of the lines that the others don't have.
std::optional<std::string> onlyIn(std::vector<std::string> const& lines,
                                  std::vector<std::string> const& others) {
  std::vector<std::string> only;
  std::ranges::set_difference(lines, others, std::back_inserter(only));
  return only.empty() ? std::nullopt : std::optional(only.front());
}

// What isn't of the tree has paths of its own.
Macsecd::StateValues treeIn(MemoryStore const& store) {
  Macsecd::StateValues values = store.values();
  std::erase_if(values, [](auto const& entry) { return entry.first.starts_with("%"); });
  return values;
}

}  // namespace

void StoreHoldsTree::instantDone(double time) {
  turns_.instantDone(time);
  if (isDue(time, kBetweenLooks)) ended();
}

void StoreHoldsTree::ended() {
  for (auto const& one : simulation().switches()) {
    if (one->isStarted() && turns_.hasAll(*one)) look(*one);
  }
}

void StoreHoldsTree::look(Switch& one) {
  Macsecd::SilentWorld world(one.world());
  Vesk::WorldScope const scope(world);
  auto const rebuilt = Macsecd::rebuiltStatus("status", treeIn(one.store()));
  for (auto const& dropped : rebuilt.dropped) breaks(one.name() + " can't take up " + dropped.path);
  std::string const tree = Vesk::entityToText(*one.host().status());
  std::string const again = Vesk::entityToText(*rebuilt.status);
  if (tree == again) return;
  auto const is = linesOf(tree), kept = linesOf(again);
  if (auto const lost = onlyIn(is, kept)) breaks(one.name() + " doesn't keep " + *lost);
  if (auto const stale = onlyIn(kept, is)) breaks(one.name() + " keeps what has gone, " + *stale);
}

}  // namespace Lab
