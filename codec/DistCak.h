#pragma once

#include <cstddef>

#include "model/DistCakSet.h"
#include "model/MacsecConstants.h"

namespace Codec {

/// A CAK on its way from the key server, with its name. An empty `CakDistInfo` is left out.
///
///       0               1               2               3
///      +---------------+---------------+-------+-----------------------+
///    0 | type (5)      | 0             | 0     | body length           |
///      +---------------+---------------+-------+-----------------------+
///    4 | CAK, wrapped: 24 or 40 octets                                 |
///      +---------------------------------------------------------------+
///      | name of the CAK, zeros up to a multiple of 4                  |
///      +---------------------------------------------------------------+
///
/// Nothing tells how long the wrapped CAK is: the one of the two lengths is right that passes the
/// integrity check of the key wrap. The name goes as octets in every dialect, since nobody here
/// knows its spelling.
struct DistCak {
  using Set = Macsec::DistCakSet;
  using Constants = Macsec::MacsecConstants;

  static constexpr size_t kShortKey = Constants::sizeOfWrapped128BitKey;
  static constexpr size_t kLongKey = Constants::sizeOfWrapped256BitKey;

  /// A wrapped CAK of this length, with its name, can fill the body.
  static constexpr bool keyFits(size_t wrapped, size_t bodyLength) {
    size_t const most = wrapped == kShortKey ? Constants::distCakParameterSet128BitKeyMaxBodyLen
                                             : Constants::distCakParameterSet256BitKeyMaxBodyLen;
    return wrapped <= bodyLength && bodyLength <= most;
  }
  static constexpr bool isForm(size_t bodyLength) {
    return keyFits(kShortKey, bodyLength) || keyFits(kLongKey, bodyLength);
  }
};

}  // namespace Codec
