#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/MessageCounterReason.h"
#include "runtime/IntfId.h"

namespace Macsec::Brine {

/// The message counters of one interface at one moment: frames by direction, type and, for a
/// failure, what failed.
class MessageCounterData {
 public:
  using Direction = MessageCounterDirection;
  using Type = MessageCounterType;
  using SubType = MessageCounterFailureSubType;

  /// What one counter counts.
  struct Kind {
    Direction direction;
    Type type;
    SubType subType;
  };
  static constexpr size_t kReasons = static_cast<size_t>(MessageCounterReason::last);
  static constexpr size_t kCounters = 2 + 2 * kReasons;
  using Counters = std::array<uint64_t, kCounters>;

  /// No counters: an empty interface, everything 0.
  MessageCounterData() = default;
  MessageCounterData(Lumo::IntfId intfId, Counters const& counters)
      : intfId_(intfId), counters_(counters) {}

  Lumo::IntfId intfId() const { return intfId_; }
  /// In the order of `indexOf`.
  Counters const& counters() const { return counters_; }
  uint64_t value(Direction direction, Type type, SubType subType) const {
    return counters_[indexOf(direction, type, subType)];
  }
  /// The successes of both directions come first, so that what counts with each MKPDU lies
  /// together. A success has no reason; a failure without one counts as `invalid`.
  static constexpr size_t indexOf(Direction direction, Type type, SubType subType) {
    auto const way = static_cast<size_t>(direction);
    if (type == Type::success) return way;
    size_t const reason = subType == SubType::none ? 1 : static_cast<size_t>(subType);
    return 2 + way * kReasons + (reason - 1);
  }
  static constexpr Kind kindOf(size_t index) {
    if (index < 2) return {Direction{static_cast<uint8_t>(index)}, Type::success, SubType::none};
    return {Direction{static_cast<uint8_t>((index - 2) / kReasons)}, Type::failure,
            SubType{static_cast<uint8_t>((index - 2) % kReasons + 1)}};
  }

  friend bool operator==(MessageCounterData const&, MessageCounterData const&) = default;

 private:
  Lumo::IntfId intfId_;
  Counters counters_{};
};

}  // namespace Macsec::Brine
