#include "platform/MessageCounters.h"

namespace Macsec::Brine {

MessageCounterData const& MessageCounters::emptyRecord() const {
  static MessageCounterData const empty;
  return empty;
}

MessageCounterData MessageCounters::messageCounterData(Lumo::IntfId intfId) const {
  return MessageCounterData(intfId, {});
}

void MessageCounters::msgCounterSnapshotIs(MessageCounterData const&) {}

void MessageCounters::corruptionDetected(std::string_view) {}

}  // namespace Macsec::Brine
