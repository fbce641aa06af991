#pragma once

#include <cstdint>

namespace Macsec {

/// The constants of the MKPDU format (IEEE 802.1X-2010 11.11, with the XPN cipher suites of IEEE
/// 802.1AE). Sizes and lengths are in octets.
struct MacsecConstants {
  static constexpr uint8_t eapolVersion = 3;
  static constexpr uint32_t eapolMinSize = 18;
  static constexpr uint16_t eapolEthType = 0x888E;

  static constexpr uint8_t mkaVersion = 1;
  static constexpr bool macsecDesired = true;
  static constexpr uint8_t macsecWithoutConfidentiality = 1;
  static constexpr uint8_t macsecWithConfidentiality = 2;

  static constexpr uint32_t mkpduMinSize = 32;
  static constexpr uint32_t sizeOfMemberIdentifier = 12;
  static constexpr uint8_t sizeOfIcv = 16;
  static constexpr uint8_t parameterSetHeaderSize = 4;
  static constexpr uint8_t sizeOfPeerInfo = 16;
  /// The body of the basic parameter set without the name of the CAK.
  static constexpr uint8_t basicParameterSetBodyLen = 28;

  static constexpr uint32_t mkaAlgorithmAgility = 0x0080C201;
  static constexpr uint8_t mkaAlgorithmAgilityIcvLength = 16;
  /// Every parameter set ends on a multiple of this.
  static constexpr uint8_t mkaWordAlignment = 4;

  static constexpr uint8_t sakUseParameterSetBodyLen = 40;

  static constexpr uint8_t distSakParameterSet128BitKeyBodyLen = 36;
  static constexpr uint8_t distSakParameterSet256BitKeyBodyLen = 52;
  static constexpr uint8_t distSakBodyLenWithoutCipherSuiteInfo = 28;
  static constexpr uint8_t distSakParameterSetLenWithoutKey = 16;

  static constexpr uint8_t distCakParameterSetMinimumBodyLen = 24;
  /// A wrapped key with a name of 32 octets ...
  static constexpr uint32_t distCakParameterSet128BitKeyMaxBodyLen = 56;
  /// ... and with one of 64: the two maxima differ in more than the key.
  static constexpr uint32_t distCakParameterSet256BitKeyMaxBodyLen = 104;

  static constexpr uint8_t sizeOfCipherSuiteParam = 8;
  static constexpr uint64_t xpn128CipherSuiteRefNo = 0x0080C20001000003;
  static constexpr uint64_t xpn256CipherSuiteRefNo = 0x0080C20001000004;
  static constexpr uint64_t nullCipherSuiteRefNo = 0xFFFFFFFFFFFFFFFF;

  static constexpr uint8_t sizeOfWrapped128BitKey = 24;
  static constexpr uint8_t sizeOfWrapped256BitKey = 40;

  static constexpr uint8_t icvIndicatorParamSetBodyLen = 4;
};

/// The first octet of every parameter set but the basic one.
struct ParameterSetTypes {
  static constexpr uint8_t livePeerParameterSetType = 1;
  static constexpr uint8_t potentialPeerParameterSetType = 2;
  static constexpr uint8_t sakUseParameterSetType = 3;
  static constexpr uint8_t distSakParameterSetType = 4;
  static constexpr uint8_t distCakParameterSetType = 5;
  static constexpr uint8_t icvIndicatorParameterSetType = 255;
};

}  // namespace Macsec
