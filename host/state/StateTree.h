#pragma once

#include <vector>

#include "host/state/StateRebuilding.h"
#include "model/Status.h"

namespace Macsecd {

struct RebuiltState {
  Vesk::Ptr<Macsec::Status> status;
  std::vector<DroppedState> dropped;
  /// What makes the store say what the tree says.
  StateChange repair;
};

/// The status tree that a store holds, before any state machine exists: entities first, then their
/// attributes. Whatever the values are, it doesn't throw: one that doesn't parse, or whose path
/// names nothing, is dropped and told, and the rest is taken. What doesn't outlive the process is
/// that of a new tree.
RebuiltState rebuiltStatus(Vesk::Name const& name, StateValues const& values);

}  // namespace Macsecd
