#pragma once

#include <cstddef>

#include "codec/Dialect.h"
#include "model/IcvIndicatorSet.h"
#include "model/MacsecConstants.h"

namespace Codec {

/// The end of every frame.
///
///       0               1               2               3
///      +---------------+---------------+-------+-----------------------+
///    0 | type (255)    | 0             | 0     | body length (4 or 16) |
///      +---------------+---------------+-------+-----------------------+
///    4 | ICV (16): AES-CMAC under the ICK of all octets in front of it |
///      +---------------------------------------------------------------+
///
/// The first four octets are the ICV indicator; a dialect leaves them out.
struct Icv {
  using Set = Macsec::IcvIndicatorSet;

  static constexpr size_t kSize = Macsec::MacsecConstants::sizeOfIcv;

  static constexpr uint16_t bodyLength(IcvIndicator form) {
    return form == IcvIndicator::length16 ? Macsec::MacsecConstants::sizeOfIcv
                                          : Macsec::MacsecConstants::icvIndicatorParamSetBodyLen;
  }
  static constexpr bool isForm(size_t bodyLength) {
    return bodyLength == Icv::bodyLength(IcvIndicator::length4) ||
           bodyLength == Icv::bodyLength(IcvIndicator::length16);
  }
};

}  // namespace Codec
