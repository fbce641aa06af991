#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>

#include "runtime/String8.h"

namespace Lumo {

/// An interface's identity. Each name is kept once for the whole process and the identity is its
/// place in that table, so that a copy is four bytes and a comparison one instruction. Hash and
/// order go by the name: they don't depend on which name was seen first.
class IntfId {
 public:
  /// The empty interface id.
  constexpr IntfId() = default;
  explicit IntfId(Vesk::String8 const& name);
  explicit IntfId(char const* name) : IntfId(Vesk::String8(name)) {}

  Vesk::String8 const& stringValue() const;
  uint32_t hash() const;
  bool empty() const { return index_ == 0; }
  /// The identity as a number: good for tables within this process, and for no order.
  uint32_t index() const { return index_; }

  friend bool operator==(IntfId a, IntfId b) { return a.index_ == b.index_; }
  friend std::strong_ordering operator<=>(IntfId a, IntfId b) {
    return a.stringValue() <=> b.stringValue();
  }

 private:
  uint32_t index_ = 0;
};

std::ostream& operator<<(std::ostream& out, IntfId id);

}  // namespace Lumo

template <>
struct std::hash<Lumo::IntfId> {
  size_t operator()(Lumo::IntfId id) const { return id.index(); }
};
