#pragma once

#include <cstddef>

#include "model/DistSakSet.h"
#include "model/MacsecConstants.h"
#include "model/ParameterSets.h"

namespace Codec {

/// A SAK on its way from the key server. A default `SakDistInfo` is left out.
///
///       0               1               2               3
///      +---------------+---+---+-------+-------+-----------------------+
///    0 | type (4)      |AN |off| 0     | 0     | body length           |
///      +---------------+---+---+-------+-------+-----------------------+
///    4 | key number                                                    |
///      +---------------------------------------------------------------+
///    8 | cipher suite (8)                                              |
///      +---------------------------------------------------------------+
///   16 | key, wrapped: 24 or 40 octets                                 |
///      +---------------------------------------------------------------+
///
/// AN: association number; off: confidentiality offset. The body length tells the form:
///
///    0   no key: MACsec is not to be used; arrives as no key of no suite
///   28   no cipher suite field, the key (24) at octet 8: the default suite, which isn't ours
///   36   key of 128 bits
///   52   key of 256 bits
struct DistSak {
  using Set = Macsec::DistSakSet;
  using Info = Macsec::SakDistInfo;
  using AnOffset = Macsec::ANOffset;
  using Constants = Macsec::MacsecConstants;

  static constexpr bool hasSuite(size_t bodyLength) {
    return bodyLength == Constants::distSakParameterSet128BitKeyBodyLen ||
           bodyLength == Constants::distSakParameterSet256BitKeyBodyLen;
  }
  static constexpr bool hasKey(size_t bodyLength) {
    return bodyLength == Constants::distSakBodyLenWithoutCipherSuiteInfo || hasSuite(bodyLength);
  }
  static constexpr bool isForm(size_t bodyLength) { return bodyLength == 0 || hasKey(bodyLength); }
  /// Where the wrapped key begins, from the start of the set; it goes up to the set's end.
  static constexpr size_t keyAt(size_t bodyLength) {
    return hasSuite(bodyLength) ? sizeof(Set) : sizeof(Set) - Constants::sizeOfCipherSuiteParam;
  }
  /// A key of this length can belong to the suite. Of suites that aren't ours nothing is known.
  static constexpr bool keyFits(Macsec::CipherSuite suite, size_t octets) {
    if (suite == Macsec::CipherSuite::gcmAesXpn128) return octets == 16;
    return suite != Macsec::CipherSuite::gcmAesXpn256 || octets == 32;
  }

  template <class Walk>
  static void anAndOffset(Walk&& walk) {
    walk("distributed AN", &Set::distributedAN, &Set::distributedANIs, &AnOffset::distAN,
         &AnOffset::distANIs);
    walk("confidentiality offset", &Set::confidentialityOffset, &Set::confidentialityOffsetIs,
         &AnOffset::offset, &AnOffset::offsetIs);
  }
  template <class Walk>
  static void fields(Walk&& walk, size_t bodyLength) {
    if (!hasKey(bodyLength)) return;
    walk("key number", &Set::keyNumber, &Set::keyNumberIs, &Info::keyNum, &Info::keyNumIs);
    if (!hasSuite(bodyLength)) return;
    walk("cipher suite", &Set::cipherSuite, &Set::cipherSuiteIs, &Info::cipherSuite,
         &Info::cipherSuiteIs);
  }
};

}  // namespace Codec
