#pragma once

#include <cstddef>
#include <cstdint>

#include "model/MkaPduParts.h"
#include "model/Overlay.h"
#include "runtime/NetValues.h"

namespace Macsec {

/// The indicator that the ICV comes next.
///
///     0 | parameterSetType (255) | reserved | icvIndicatorLengthSet (2) |
///
/// `reserved` is the octet; the four bits of that name are reached through the length set.
class IcvIndicatorSet {
 public:
  uint8_t parameterSetType() const { return parameterSetType_.value(); }
  void parameterSetTypeIs(uint8_t value) { parameterSetType_.valueIs(value); }
  uint8_t reserved() const { return reserved_.value(); }
  void reservedIs(uint8_t value) { reserved_.valueIs(value); }
  IcvIndicatorLengthSet const& icvIndicatorLengthSet() const { return icvIndicatorLengthSet_; }
  void icvIndicatorLengthSetIs(IcvIndicatorLengthSet const& value) {
    icvIndicatorLengthSet_ = value;
  }

  uint16_t parameterSetBodyLength() const {
    return icvIndicatorLengthSet_.parameterSetBodyLength();
  }
  void parameterSetBodyLengthIs(uint16_t value) {
    icvIndicatorLengthSet_.parameterSetBodyLengthIs(value);
  }

 private:
  static constexpr void checkLayout() {
    static_assert(offsetof(IcvIndicatorSet, parameterSetType_) == 0);
    static_assert(offsetof(IcvIndicatorSet, reserved_) == 1);
    static_assert(offsetof(IcvIndicatorSet, icvIndicatorLengthSet_) == 2);
  }

  Lumo::NetU8 parameterSetType_;
  Lumo::NetU8 reserved_;
  IcvIndicatorLengthSet icvIndicatorLengthSet_;
};

static_assert(isOverlay<IcvIndicatorSet, 4>);

}  // namespace Macsec
