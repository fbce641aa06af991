#pragma once

#include <compare>
#include <cstdint>

#include "runtime/Text.h"

namespace Macsec {

/// The 2-bit association number of a secure association (IEEE 802.1AE, 9.5). A value above `max`
/// throws `Vesk::RangeException`: who advances a number wraps it first.
class AssociationNumber : public Vesk::Value<AssociationNumber> {
 public:
  static constexpr uint8_t min = 0;
  static constexpr uint8_t max = 3;

  AssociationNumber() = default;
  explicit AssociationNumber(uint64_t value) : value_(checked(value)) {}

  uint8_t value() const { return value_; }
  void valueIs(uint64_t v) { value_ = checked(v); }
  uint32_t hash() const { return value_; }

  friend bool operator==(AssociationNumber const&, AssociationNumber const&) = default;
  friend auto operator<=>(AssociationNumber const& a, AssociationNumber const& b) {
    return a.value_ <=> b.value_;
  }

  static constexpr char const* kTypeName = "Macsec::AssociationNumber";
  static constexpr bool kPrintsBare = true;
  uint64_t number() const { return value_; }
  static AssociationNumber fromNumber(uint64_t number) { return AssociationNumber(number); }
  template <class V>
  static void describe(V&& v) {
    v("value", &AssociationNumber::value_);
  }

 private:
  static uint8_t checked(uint64_t value) {
    if (value > max) {
      Vesk::throwRangeException(
          "AssociationNumber::value < AssociationNumber::min or > AssociationNumber::max not "
          "allowed");
    }
    return static_cast<uint8_t>(value);
  }
  uint8_t value_ = 0;
};

}  // namespace Macsec
