#pragma once

#include <cstddef>
#include <cstdint>

#include "model/MkaPduParts.h"
#include "model/Overlay.h"
#include "runtime/NetValues.h"

namespace Macsec {

/// The head of a distributed SAK; the wrapped key follows it. A body of
/// `MacsecConstants::distSakBodyLenWithoutCipherSuiteInfo` has the wrapped key in the place of
/// `cipherSuite`, which then doesn't exist in the frame.
///
///     0 | parameterSetType (4) | distSakAnAndOffset | distSakLengthSet (2) |
///     4 | keyNumber (4)                                                    |
///     8 | cipherSuite (8)                                                  |
///
/// The reserved bits are reached through the two parts that have some.
class DistSakSet {
 public:
  uint8_t parameterSetType() const { return parameterSetType_.value(); }
  void parameterSetTypeIs(uint8_t value) { parameterSetType_.valueIs(value); }
  DistSakAnAndOffset const& distSakAnAndOffset() const { return distSakAnAndOffset_; }
  void distSakAnAndOffsetIs(DistSakAnAndOffset const& value) { distSakAnAndOffset_ = value; }

  uint8_t distributedAN() const { return distSakAnAndOffset_.distributedAN(); }
  void distributedANIs(uint8_t value) { distSakAnAndOffset_.distributedANIs(value); }
  uint8_t confidentialityOffset() const { return distSakAnAndOffset_.confidentialityOffset(); }
  void confidentialityOffsetIs(uint8_t value) {
    distSakAnAndOffset_.confidentialityOffsetIs(value);
  }

  DistSakLengthSet const& distSakLengthSet() const { return distSakLengthSet_; }
  void distSakLengthSetIs(DistSakLengthSet const& value) { distSakLengthSet_ = value; }

  uint16_t parameterSetBodyLength() const { return distSakLengthSet_.parameterSetBodyLength(); }
  void parameterSetBodyLengthIs(uint16_t value) {
    distSakLengthSet_.parameterSetBodyLengthIs(value);
  }

  Lumo::NetU32 keyNumber() const { return keyNumber_; }
  void keyNumberIs(Lumo::NetU32 value) { keyNumber_ = value; }
  Lumo::NetU64 cipherSuite() const { return cipherSuite_; }
  void cipherSuiteIs(Lumo::NetU64 value) { cipherSuite_ = value; }

 private:
  static constexpr void checkLayout() {
    static_assert(offsetof(DistSakSet, parameterSetType_) == 0);
    static_assert(offsetof(DistSakSet, distSakAnAndOffset_) == 1);
    static_assert(offsetof(DistSakSet, distSakLengthSet_) == 2);
    static_assert(offsetof(DistSakSet, keyNumber_) == 4);
    static_assert(offsetof(DistSakSet, cipherSuite_) == 8);
  }

  Lumo::NetU8 parameterSetType_;
  DistSakAnAndOffset distSakAnAndOffset_;
  DistSakLengthSet distSakLengthSet_;
  Lumo::NetU32 keyNumber_;
  Lumo::NetU64 cipherSuite_;
};

static_assert(isOverlay<DistSakSet, 16>);

}  // namespace Macsec
