#pragma once

#include <string>

#include "host/state/StateStore.h"
#include "runtime/Entity.h"
#include "runtime/World.h"

namespace Macsecd {

/// Follows every write to a tree, as its classes describe themselves, and gives what a turn of the
/// loop has changed to a store, as one transaction. What it does grows with what is written, not
/// with what the tree holds.
///
///     Entity::write -> attribute log -> pending -> commit() -> StateStore
///
/// What doesn't outlive the process isn't kept.
class StateKeeper final : public Vesk::AttributeFollower {
 public:
  /// Follows the tree in the current world, which has to outlive this. `first` goes with the first
  /// transaction.
  StateKeeper(Vesk::Ptr<Vesk::Entity const> root, StateStore& store, StateChange first = {});
  ~StateKeeper();
  StateKeeper(StateKeeper const&) = delete;
  StateKeeper& operator=(StateKeeper const&) = delete;

  /// The end of a turn. True if there was something to commit and the store has taken it; what it
  /// has refused is tried again with the next turn.
  bool commit();
  /// Why the store refused the last transaction; empty if it took it.
  std::string const& error() const { return error_; }

  void attributeWritten(Vesk::AttributeWrite const& write) override;
  void flushAttributes() override { commit(); }

 private:
  void memberWent(std::string const& path);

  Vesk::World& world_;
  Vesk::Ptr<Vesk::Entity const> const root_;
  StateStore& store_;
  StateChange pending_;
  std::string error_;
};

}  // namespace Macsecd
