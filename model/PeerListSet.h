#pragma once

#include <cstddef>
#include <cstdint>

#include "model/MemberIdentifier.h"
#include "model/MkaPduParts.h"
#include "model/Overlay.h"
#include "runtime/NetValues.h"

namespace Macsec {

/// The head of a live or potential peer list; the records follow it.
///
///     0 | parameterSetType (1, 2) | reserved | peerListLengthParameter (2) |
///
/// `reserved` is the octet; the four bits of that name are reached through the length parameter.
class PeerListSet {
 public:
  uint8_t parameterSetType() const { return parameterSetType_.value(); }
  void parameterSetTypeIs(uint8_t value) { parameterSetType_.valueIs(value); }
  uint8_t reserved() const { return reserved_.value(); }
  void reservedIs(uint8_t value) { reserved_.valueIs(value); }
  PeerListLengthParameter const& peerListLengthParameter() const {
    return peerListLengthParameter_;
  }
  void peerListLengthParameterIs(PeerListLengthParameter const& value) {
    peerListLengthParameter_ = value;
  }

  uint16_t parameterSetBodyLength() const {
    return peerListLengthParameter_.parameterSetBodyLength();
  }
  void parameterSetBodyLengthIs(uint16_t value) {
    peerListLengthParameter_.parameterSetBodyLengthIs(value);
  }

 private:
  static constexpr void checkLayout() {
    static_assert(offsetof(PeerListSet, parameterSetType_) == 0);
    static_assert(offsetof(PeerListSet, reserved_) == 1);
    static_assert(offsetof(PeerListSet, peerListLengthParameter_) == 2);
  }

  Lumo::NetU8 parameterSetType_;
  Lumo::NetU8 reserved_;
  PeerListLengthParameter peerListLengthParameter_;
};

static_assert(isOverlay<PeerListSet, 4>);

/// One record of a peer list.
///
///      0 | memberIdentifier (12) |
///     12 | messageNumber (4)     |
class PeerInfoParameter {
 public:
  MemberIdentifier const& memberIdentifier() const { return memberIdentifier_; }
  void memberIdentifierIs(MemberIdentifier const& value) { memberIdentifier_ = value; }
  Lumo::NetU32 messageNumber() const { return messageNumber_; }
  void messageNumberIs(Lumo::NetU32 value) { messageNumber_ = value; }

 private:
  static constexpr void checkLayout() {
    static_assert(offsetof(PeerInfoParameter, memberIdentifier_) == 0);
    static_assert(offsetof(PeerInfoParameter, messageNumber_) == 12);
  }

  MemberIdentifier memberIdentifier_;
  Lumo::NetU32 messageNumber_;
};

static_assert(isOverlay<PeerInfoParameter, 16>);

}  // namespace Macsec
