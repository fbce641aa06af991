#pragma once

#include "platform/MessageCounterTypes.h"

namespace Macsec {

/// Why frames are refused that are right in all their parts: it lies in who sends them, and when.
/// The table of counters has these behind the failures of parts.
namespace MessageCounterReason {

using SubType = MessageCounterFailureSubType;

/// The sender has been heard with this message number or a later one.
inline constexpr SubType replayErr{13};
/// The frame distributes a key, and doesn't show that its sender has heard this end lately.
inline constexpr SubType livenessErr{14};
/// The sender is a stranger, and there is no room for one more.
inline constexpr SubType tooManyPeersErr{15};

inline constexpr SubType last = tooManyPeersErr;

}  // namespace MessageCounterReason

/// The name of a counter of failures: the part that failed, or one of `MessageCounterReason`.
inline char const* reasonName(MessageCounterFailureSubType reason) {
  if (reason == MessageCounterReason::replayErr) return "replayErr";
  if (reason == MessageCounterReason::livenessErr) return "livenessErr";
  if (reason == MessageCounterReason::tooManyPeersErr) return "tooManyPeersErr";
  return Vesk::stringValue(reason);
}

}  // namespace Macsec
