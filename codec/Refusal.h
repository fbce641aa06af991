#pragma once

#include <cstddef>

#include "platform/MessageCounterReason.h"

namespace Codec {

using SubType = Macsec::MessageCounterFailureSubType;
namespace Reason = Macsec::MessageCounterReason;

/// Why a frame is refused, and at which octet of it, counted from 0 at the destination address.
/// Tests false when nothing speaks against the frame.
struct Refusal {
  SubType subType = SubType::none;
  size_t octet = 0;
  char const* what = nullptr;

  explicit operator bool() const { return what != nullptr; }
};

}  // namespace Codec
