#pragma once

#include <string>

#include "host/state/StateStore.h"

namespace Macsecd {

/// A store in memory that takes everything, or refuses it.
struct KeptState final : StateStore {
  StateValues readAll() override { return values; }
  Result<> commit(StateChange const& change) override {
    if (!refusal.empty()) return Fault{refusal, "free some"};
    ++commits;
    apply(change, values);
    return {};
  }

  StateValues values;
  std::string refusal;
  size_t commits = 0;
};

}  // namespace Macsecd
