#pragma once

#include <string>
#include <vector>

#include "host/state/StateStore.h"
#include "model/Status.h"

namespace Macsecd {

/// What stands under the path of an entity that has no constructor parameters but its key.
inline constexpr char const* kMemberIsThere = "+";

/// A value that a store held and the tree couldn't take, or could only in part.
struct DroppedState {
  std::string path;
  std::string reason;
};

struct RebuiltState {
  Vesk::Ptr<Macsec::Status> status;
  std::vector<DroppedState> dropped;
  /// What makes the store say what the tree says.
  StateChange repair;
};

/// The status tree that a store holds, before any state machine exists: entities first, then their
/// attributes. Whatever the values are, it doesn't throw: one that doesn't parse, or whose path
/// names nothing, is dropped and told, and the rest is taken. `fipsStatus` is that of a new tree.
RebuiltState rebuiltStatus(Vesk::Name const& name, StateValues const& values);

}  // namespace Macsecd
