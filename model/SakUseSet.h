#pragma once

#include <cstddef>
#include <cstdint>

#include "model/MemberIdentifier.h"
#include "model/MkaPduParts.h"
#include "model/Overlay.h"
#include "runtime/NetValues.h"

namespace Macsec {

/// How the sender uses the latest and the old key. `llpn` and `olpn` are the lowest packet numbers
/// that it accepts under them.
///
///      0 | parameterSetType (3) | sakUseAnAndOffset | sakUsePlainTxAndLengthSet (2) |
///      4 | latestKeyServerMemberIdentifier (12)                                     |
///     16 | latestKeyNumber (4)                                                      |
///     20 | llpn (4)                                                                 |
///     24 | oldKeyServerMemberIdentifier (12)                                        |
///     36 | oldKeyNumber (4)                                                         |
///     40 | olpn (4)                                                                 |
class SakUseSet {
 public:
  uint8_t parameterSetType() const { return parameterSetType_.value(); }
  void parameterSetTypeIs(uint8_t value) { parameterSetType_.valueIs(value); }
  SakUseAnAndOffset const& sakUseAnAndOffset() const { return sakUseAnAndOffset_; }
  void sakUseAnAndOffsetIs(SakUseAnAndOffset const& value) { sakUseAnAndOffset_ = value; }

  uint8_t latestKeyAN() const { return sakUseAnAndOffset_.latestKeyAN(); }
  void latestKeyANIs(uint8_t value) { sakUseAnAndOffset_.latestKeyANIs(value); }
  uint8_t latestKeyTx() const { return sakUseAnAndOffset_.latestKeyTx(); }
  void latestKeyTxIs(uint8_t value) { sakUseAnAndOffset_.latestKeyTxIs(value); }
  uint8_t latestKeyRx() const { return sakUseAnAndOffset_.latestKeyRx(); }
  void latestKeyRxIs(uint8_t value) { sakUseAnAndOffset_.latestKeyRxIs(value); }
  uint8_t oldKeyAN() const { return sakUseAnAndOffset_.oldKeyAN(); }
  void oldKeyANIs(uint8_t value) { sakUseAnAndOffset_.oldKeyANIs(value); }
  uint8_t oldKeyTx() const { return sakUseAnAndOffset_.oldKeyTx(); }
  void oldKeyTxIs(uint8_t value) { sakUseAnAndOffset_.oldKeyTxIs(value); }
  uint8_t oldKeyRx() const { return sakUseAnAndOffset_.oldKeyRx(); }
  void oldKeyRxIs(uint8_t value) { sakUseAnAndOffset_.oldKeyRxIs(value); }

  SakUsePlainTxAndLengthSet const& sakUsePlainTxAndLengthSet() const {
    return sakUsePlainTxAndLengthSet_;
  }
  void sakUsePlainTxAndLengthSetIs(SakUsePlainTxAndLengthSet const& value) {
    sakUsePlainTxAndLengthSet_ = value;
  }

  uint8_t plainTx() const { return sakUsePlainTxAndLengthSet_.plainTx(); }
  void plainTxIs(uint8_t value) { sakUsePlainTxAndLengthSet_.plainTxIs(value); }
  uint8_t plainRx() const { return sakUsePlainTxAndLengthSet_.plainRx(); }
  void plainRxIs(uint8_t value) { sakUsePlainTxAndLengthSet_.plainRxIs(value); }
  uint8_t reserved() const { return sakUsePlainTxAndLengthSet_.reserved(); }
  void reservedIs(uint8_t value) { sakUsePlainTxAndLengthSet_.reservedIs(value); }
  uint8_t delayProtect() const { return sakUsePlainTxAndLengthSet_.delayProtect(); }
  void delayProtectIs(uint8_t value) { sakUsePlainTxAndLengthSet_.delayProtectIs(value); }
  uint16_t parameterSetBodyLength() const {
    return sakUsePlainTxAndLengthSet_.parameterSetBodyLength();
  }
  void parameterSetBodyLengthIs(uint16_t value) {
    sakUsePlainTxAndLengthSet_.parameterSetBodyLengthIs(value);
  }

  MemberIdentifier const& latestKeyServerMemberIdentifier() const {
    return latestKeyServerMemberIdentifier_;
  }
  void latestKeyServerMemberIdentifierIs(MemberIdentifier const& value) {
    latestKeyServerMemberIdentifier_ = value;
  }
  Lumo::NetU32 latestKeyNumber() const { return latestKeyNumber_; }
  void latestKeyNumberIs(Lumo::NetU32 value) { latestKeyNumber_ = value; }
  Lumo::NetU32 llpn() const { return llpn_; }
  void llpnIs(Lumo::NetU32 value) { llpn_ = value; }
  MemberIdentifier const& oldKeyServerMemberIdentifier() const {
    return oldKeyServerMemberIdentifier_;
  }
  void oldKeyServerMemberIdentifierIs(MemberIdentifier const& value) {
    oldKeyServerMemberIdentifier_ = value;
  }
  Lumo::NetU32 oldKeyNumber() const { return oldKeyNumber_; }
  void oldKeyNumberIs(Lumo::NetU32 value) { oldKeyNumber_ = value; }
  Lumo::NetU32 olpn() const { return olpn_; }
  void olpnIs(Lumo::NetU32 value) { olpn_ = value; }

 private:
  static constexpr void checkLayout() {
    static_assert(offsetof(SakUseSet, parameterSetType_) == 0);
    static_assert(offsetof(SakUseSet, sakUseAnAndOffset_) == 1);
    static_assert(offsetof(SakUseSet, sakUsePlainTxAndLengthSet_) == 2);
    static_assert(offsetof(SakUseSet, latestKeyServerMemberIdentifier_) == 4);
    static_assert(offsetof(SakUseSet, latestKeyNumber_) == 16);
    static_assert(offsetof(SakUseSet, llpn_) == 20);
    static_assert(offsetof(SakUseSet, oldKeyServerMemberIdentifier_) == 24);
    static_assert(offsetof(SakUseSet, oldKeyNumber_) == 36);
    static_assert(offsetof(SakUseSet, olpn_) == 40);
  }

  Lumo::NetU8 parameterSetType_;
  SakUseAnAndOffset sakUseAnAndOffset_;
  SakUsePlainTxAndLengthSet sakUsePlainTxAndLengthSet_;
  MemberIdentifier latestKeyServerMemberIdentifier_;
  Lumo::NetU32 latestKeyNumber_;
  Lumo::NetU32 llpn_;
  MemberIdentifier oldKeyServerMemberIdentifier_;
  Lumo::NetU32 oldKeyNumber_;
  Lumo::NetU32 olpn_;
};

static_assert(isOverlay<SakUseSet, 44>);

}  // namespace Macsec
