#pragma once

#include <memory>
#include <vector>

#include "runtime/Homes.h"
#include "runtime/IntfId.h"

namespace Vesk {

/// One object for each interface, in its home. Finding one costs the same however many there are.
template <class T>
class InterfaceTable {
 public:
  /// Null for an interface without one.
  T* find(Lumo::IntfId intfId) const {
    return intfId.index() < members_.size() ? members_[intfId.index()].get() : nullptr;
  }
  /// Made of these arguments if there is none.
  template <class... Args>
  T& memberIs(Lumo::IntfId intfId, Args const&... args) {
    if (members_.size() <= intfId.index()) members_.resize(intfId.index() + 1);
    auto& member = members_[intfId.index()];
    if (!member) {
      HomeScope const scope(intfId);
      member = std::make_unique<T>(args...);
    }
    return *member;
  }
  void memberDel(Lumo::IntfId intfId) {
    if (intfId.index() < members_.size()) members_[intfId.index()].reset();
  }
  void clear() { members_.clear(); }

 private:
  std::vector<std::unique_ptr<T>> members_;
};

}  // namespace Vesk
