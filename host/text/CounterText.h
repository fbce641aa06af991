#pragma once

#include <string>

#include "platform/MessageCounterReader.h"

namespace Macsecd {

/// A table of message counters as an operator reads it: for each interface, in the order of their
/// names, a line for each counter that isn't 0, with the count since the counters were last cleared
/// and the count in all.
///
///     Interface  Frames                       Since clear  Total
///     Ethernet1  tx success                            12     40
///                rx failure icvValidationErr            1      3
///     Ethernet2  none
///     (others)   rx failure unrecognizedCkn             7      7
///     (record 3) unreadable: record 3 'Ethernet3': counters, slot 0: ...
///
/// "(others)" are the frames of interfaces without a record. Throws
/// `Pollux::CorruptionDetectedException` if the header of the table is damaged; a damaged record is
/// a line of its own.
std::string counterText(Macsec::Brine::MessageCounterReader const& reader);

/// What a counter counts, by its place in `MessageCounterData`: "rx failure icvValidationErr".
std::string counterName(size_t counter);

}  // namespace Macsecd
