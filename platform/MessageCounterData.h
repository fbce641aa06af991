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

  static constexpr size_t kSubTypes = static_cast<size_t>(MessageCounterReason::last) + 1;
  static constexpr size_t kCounters = 2 * 2 * kSubTypes;
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
  static constexpr size_t indexOf(Direction direction, Type type, SubType subType) {
    return (2 * static_cast<size_t>(direction) + static_cast<size_t>(type)) * kSubTypes +
           static_cast<size_t>(subType);
  }

  friend bool operator==(MessageCounterData const&, MessageCounterData const&) = default;

 private:
  Lumo::IntfId intfId_;
  Counters counters_{};
};

}  // namespace Macsec::Brine
