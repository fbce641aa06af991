#pragma once

#include <cstddef>
#include <cstdint>

#include "model/MkaPduParts.h"
#include "model/Overlay.h"
#include "runtime/NetValues.h"

namespace Macsec {

/// The head of a distributed CAK; the wrapped key and then its name follow.
///
///     0 | parameterSetType (5) | reserved | distCakLengthSet (2) |
///
/// `reserved` is the octet; the four bits of that name are reached through the length set.
class DistCakSet {
 public:
  uint8_t parameterSetType() const { return parameterSetType_.value(); }
  void parameterSetTypeIs(uint8_t value) { parameterSetType_.valueIs(value); }
  uint8_t reserved() const { return reserved_.value(); }
  void reservedIs(uint8_t value) { reserved_.valueIs(value); }
  DistCakLengthSet const& distCakLengthSet() const { return distCakLengthSet_; }
  void distCakLengthSetIs(DistCakLengthSet const& value) { distCakLengthSet_ = value; }

  uint16_t parameterSetBodyLength() const { return distCakLengthSet_.parameterSetBodyLength(); }
  void parameterSetBodyLengthIs(uint16_t value) {
    distCakLengthSet_.parameterSetBodyLengthIs(value);
  }

 private:
  static constexpr void checkLayout() {
    static_assert(offsetof(DistCakSet, parameterSetType_) == 0);
    static_assert(offsetof(DistCakSet, reserved_) == 1);
    static_assert(offsetof(DistCakSet, distCakLengthSet_) == 2);
  }

  Lumo::NetU8 parameterSetType_;
  Lumo::NetU8 reserved_;
  DistCakLengthSet distCakLengthSet_;
};

static_assert(isOverlay<DistCakSet, 4>);

}  // namespace Macsec
