#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/MessageCounterData.h"
#include "runtime/PtrInterface.h"
#include "runtime/String8.h"

namespace Macsec::Brine {

/// The message counters of all interfaces, which the codec keeps and the management layer reads.
class MessageCounters : public Vesk::PtrInterface {
 public:
  /// The record of an interface as it is now; the empty record for an interface without one. Throws
  /// `Pollux::CorruptionDetectedException`.
  MessageCounterData messageCounterData(Lumo::IntfId intfId) const;
  MessageCounterData const& emptyRecord() const;
  /// Stores this as the state since which a reader counts. The empty record stores nothing.
  void msgCounterSnapshotIs(MessageCounterData const& record);
  /// What happens when a read has found the table corrupt.
  void corruptionDetected(std::string_view message);
};

}  // namespace Macsec::Brine
