#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "model/Status.h"
#include "runtime/World.h"

namespace Macsecd {

/// The stored keys of a tree that can't be read, by name and interface: "key c0de0001 of
/// Ethernet1".
std::string unreadableKeys(Macsec::Status const& status);

/// As long as it lives, a stored key that can't be read is told in the log of the switch that has
/// come across it: where it is as far as the tree knows, and what to do. Once: it is met again with
/// each use. A world has one of these at a time.
class UnreadableKeyTeller {
 public:
  /// The tree of the switch that is at work; null if none is.
  using StatusAtWork = std::function<Vesk::Ptr<Macsec::Status const>()>;

  /// In the current world, which has to outlive this.
  explicit UnreadableKeyTeller(StatusAtWork status);
  ~UnreadableKeyTeller();
  UnreadableKeyTeller(UnreadableKeyTeller const&) = delete;
  UnreadableKeyTeller& operator=(UnreadableKeyTeller const&) = delete;

 private:
  void tell(std::string_view what) const;

  Vesk::World& world_;
  StatusAtWork const status_;
};

}  // namespace Macsecd
