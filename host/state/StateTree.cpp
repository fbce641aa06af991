#include "host/state/StateTree.h"

#include <utility>

#include "host/state/SilentWorld.h"
#include "model/Factories.h"
#include "runtime/Trace.h"

namespace Macsecd {

namespace {

Vesk::TraceHandle traceHandle("Macsecd::Host");

}  // namespace

void Rebuilding::unknown() { throw std::invalid_argument("the tree has no such place"); }

void Rebuilding::told(std::string reason) { dropped.push_back({*path_, std::move(reason)}); }

void Rebuilding::drop(std::string reason) {
  repair.values[*path_] = std::nullopt;
  told(std::move(reason));
}

void Rebuilding::entryIs(std::string const& path, std::string const& text) {
  auto const entry = values_.find(path);
  if (entry != values_.end() && entry->second == text) return;
  repair.values[path] = text;
  told("the entry of its entity is missing or damaged, and was made again");
}

RebuiltState rebuiltStatus(Vesk::Name const& name, StateValues const& values) {
  auto const status = Macsec::statusFactory(name);
  Rebuilding rebuilding(values);
  {
    // Nothing of this is news.
    SilentWorld silent(Vesk::world());
    Vesk::WorldScope const scope(silent);
    rebuilding.putAll(*status);
  }
  for (DroppedState const& dropped : rebuilding.dropped) {
    VESK_TRACE(1, ": ", dropped.path, ": ", dropped.reason);
  }
  return {status, std::move(rebuilding.dropped), std::move(rebuilding.repair)};
}

}  // namespace Macsecd
