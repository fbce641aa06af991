#pragma once

#include <cstdint>

#include "model/BitPart.h"

namespace Macsec {

/// What the basic parameter set says in single bits, and how long its body is.
///
///          15            14             13..12                11..0
///    | keyServer | macsecDesired | macsecCapability | parameterSetBodyLength |
class BasicParameterSetPart : public BitPart<BasicParameterSetPart, uint16_t> {
 public:
  static constexpr char const* kTypeName = "Macsec::BasicParameterSetPart";

  using BitPart::BitPart;

  constexpr uint8_t keyServer() const { return static_cast<uint8_t>(bits<15, 15>()); }
  constexpr void keyServerIs(uint8_t value) { bitsIs<15, 15>(value); }
  constexpr uint8_t macsecDesired() const { return static_cast<uint8_t>(bits<14, 14>()); }
  constexpr void macsecDesiredIs(uint8_t value) { bitsIs<14, 14>(value); }
  constexpr uint8_t macsecCapability() const { return static_cast<uint8_t>(bits<13, 12>()); }
  constexpr void macsecCapabilityIs(uint8_t value) { bitsIs<13, 12>(value); }
  constexpr uint16_t parameterSetBodyLength() const { return bits<11, 0>(); }
  constexpr void parameterSetBodyLengthIs(uint16_t value) { bitsIs<11, 0>(value); }
};

/// The length of a peer list: 16 times the number of its records.
///
///       15..12            11..0
///    | reserved | parameterSetBodyLength |
class PeerListLengthParameter : public BitPart<PeerListLengthParameter, uint16_t> {
 public:
  static constexpr char const* kTypeName = "Macsec::PeerListLengthParameter";

  using BitPart::BitPart;

  constexpr uint8_t reserved() const { return static_cast<uint8_t>(bits<15, 12>()); }
  constexpr void reservedIs(uint8_t value) { bitsIs<15, 12>(value); }
  constexpr uint16_t parameterSetBodyLength() const { return bits<11, 0>(); }
  constexpr void parameterSetBodyLengthIs(uint16_t value) { bitsIs<11, 0>(value); }
};

/// Association number and use of the latest and of the old key.
///
///          7..6           5             4          3..2        1          0
///    | latestKeyAN | latestKeyTx | latestKeyRx | oldKeyAN | oldKeyTx | oldKeyRx |
class SakUseAnAndOffset : public BitPart<SakUseAnAndOffset, uint8_t> {
 public:
  static constexpr char const* kTypeName = "Macsec::SakUseAnAndOffset";

  using BitPart::BitPart;

  constexpr uint8_t latestKeyAN() const { return bits<7, 6>(); }
  constexpr void latestKeyANIs(uint8_t value) { bitsIs<7, 6>(value); }
  constexpr uint8_t latestKeyTx() const { return bits<5, 5>(); }
  constexpr void latestKeyTxIs(uint8_t value) { bitsIs<5, 5>(value); }
  constexpr uint8_t latestKeyRx() const { return bits<4, 4>(); }
  constexpr void latestKeyRxIs(uint8_t value) { bitsIs<4, 4>(value); }
  constexpr uint8_t oldKeyAN() const { return bits<3, 2>(); }
  constexpr void oldKeyANIs(uint8_t value) { bitsIs<3, 2>(value); }
  constexpr uint8_t oldKeyTx() const { return bits<1, 1>(); }
  constexpr void oldKeyTxIs(uint8_t value) { bitsIs<1, 1>(value); }
  constexpr uint8_t oldKeyRx() const { return bits<0, 0>(); }
  constexpr void oldKeyRxIs(uint8_t value) { bitsIs<0, 0>(value); }
};

/// Use of frames without protection, and the length of a SAK use set.
///
///         15        14        13           12                11..0
///    | plainTx | plainRx | reserved | delayProtect | parameterSetBodyLength |
class SakUsePlainTxAndLengthSet : public BitPart<SakUsePlainTxAndLengthSet, uint16_t> {
 public:
  static constexpr char const* kTypeName = "Macsec::SakUsePlainTxAndLengthSet";

  using BitPart::BitPart;

  constexpr uint8_t plainTx() const { return static_cast<uint8_t>(bits<15, 15>()); }
  constexpr void plainTxIs(uint8_t value) { bitsIs<15, 15>(value); }
  constexpr uint8_t plainRx() const { return static_cast<uint8_t>(bits<14, 14>()); }
  constexpr void plainRxIs(uint8_t value) { bitsIs<14, 14>(value); }
  constexpr uint8_t reserved() const { return static_cast<uint8_t>(bits<13, 13>()); }
  constexpr void reservedIs(uint8_t value) { bitsIs<13, 13>(value); }
  constexpr uint8_t delayProtect() const { return static_cast<uint8_t>(bits<12, 12>()); }
  constexpr void delayProtectIs(uint8_t value) { bitsIs<12, 12>(value); }
  constexpr uint16_t parameterSetBodyLength() const { return bits<11, 0>(); }
  constexpr void parameterSetBodyLengthIs(uint16_t value) { bitsIs<11, 0>(value); }
};

/// Association number and confidentiality offset of a distributed SAK.
///
///           7..6                5..4             3..0
///    | distributedAN | confidentialityOffset | reserved |
class DistSakAnAndOffset : public BitPart<DistSakAnAndOffset, uint8_t> {
 public:
  static constexpr char const* kTypeName = "Macsec::DistSakAnAndOffset";

  using BitPart::BitPart;

  constexpr uint8_t distributedAN() const { return bits<7, 6>(); }
  constexpr void distributedANIs(uint8_t value) { bitsIs<7, 6>(value); }
  constexpr uint8_t confidentialityOffset() const { return bits<5, 4>(); }
  constexpr void confidentialityOffsetIs(uint8_t value) { bitsIs<5, 4>(value); }
  constexpr uint8_t reserved() const { return bits<3, 0>(); }
  constexpr void reservedIs(uint8_t value) { bitsIs<3, 0>(value); }
};

/// The length of a distributed SAK set.
///
///       15..12            11..0
///    | reserved | parameterSetBodyLength |
class DistSakLengthSet : public BitPart<DistSakLengthSet, uint16_t> {
 public:
  static constexpr char const* kTypeName = "Macsec::DistSakLengthSet";

  using BitPart::BitPart;

  constexpr uint8_t reserved() const { return static_cast<uint8_t>(bits<15, 12>()); }
  constexpr void reservedIs(uint8_t value) { bitsIs<15, 12>(value); }
  constexpr uint16_t parameterSetBodyLength() const { return bits<11, 0>(); }
  constexpr void parameterSetBodyLengthIs(uint16_t value) { bitsIs<11, 0>(value); }
};

/// The length of a distributed CAK set.
///
///       15..12            11..0
///    | reserved | parameterSetBodyLength |
class DistCakLengthSet : public BitPart<DistCakLengthSet, uint16_t> {
 public:
  static constexpr char const* kTypeName = "Macsec::DistCakLengthSet";

  using BitPart::BitPart;

  constexpr uint8_t reserved() const { return static_cast<uint8_t>(bits<15, 12>()); }
  constexpr void reservedIs(uint8_t value) { bitsIs<15, 12>(value); }
  constexpr uint16_t parameterSetBodyLength() const { return bits<11, 0>(); }
  constexpr void parameterSetBodyLengthIs(uint16_t value) { bitsIs<11, 0>(value); }
};

/// The length that the ICV indicator names.
///
///       15..12            11..0
///    | reserved | parameterSetBodyLength |
class IcvIndicatorLengthSet : public BitPart<IcvIndicatorLengthSet, uint16_t> {
 public:
  static constexpr char const* kTypeName = "Macsec::IcvIndicatorLengthSet";

  using BitPart::BitPart;

  constexpr uint8_t reserved() const { return static_cast<uint8_t>(bits<15, 12>()); }
  constexpr void reservedIs(uint8_t value) { bitsIs<15, 12>(value); }
  constexpr uint16_t parameterSetBodyLength() const { return bits<11, 0>(); }
  constexpr void parameterSetBodyLengthIs(uint16_t value) { bitsIs<11, 0>(value); }
};

}  // namespace Macsec
