#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/MessageCounterTypes.h"
#include "runtime/IntfId.h"

namespace Codec {

/// Counts frames for each interface by direction, type and, for a failure, what failed.
class FrameCounters {
 public:
  using Direction = Macsec::MessageCounterDirection;
  using Type = Macsec::MessageCounterType;
  using SubType = Macsec::MessageCounterFailureSubType;

  virtual ~FrameCounters() = default;
  /// Makes room for an interface, so that counting on it allocates nothing.
  virtual void intfIs(Lumo::IntfId intfId) = 0;
  /// Adds one. A success has the sub type `none`. On an interface without room it counts for the
  /// empty interface id.
  virtual void inc(Lumo::IntfId intfId, Direction direction, Type type, SubType subType) = 0;
  /// What has been counted; 0 for an interface without room.
  virtual uint64_t value(Lumo::IntfId intfId, Direction direction, Type type,
                         SubType subType) const = 0;
};

/// Counters in the memory of this process.
class FrameCounterTable final : public FrameCounters {
 public:
  FrameCounterTable() { intfIs(Lumo::IntfId()); }
  void intfIs(Lumo::IntfId intfId) override;
  void inc(Lumo::IntfId intfId, Direction direction, Type type, SubType subType) override;
  uint64_t value(Lumo::IntfId intfId, Direction direction, Type type,
                 SubType subType) const override;

 private:
  static constexpr size_t kSubTypes = static_cast<size_t>(SubType::unrecognizedSetErr) + 1;
  using Row = std::array<uint64_t, 2 * 2 * kSubTypes>;

  Row* row(Lumo::IntfId intfId) const;
  static size_t column(Direction direction, Type type, SubType subType);

  // By the index of the interface.
  std::vector<std::unique_ptr<Row>> rows_;
};

}  // namespace Codec
