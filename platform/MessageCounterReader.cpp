#include "platform/MessageCounterReader.h"

#include <exception>

#include "platform/Corruption.h"

namespace Macsec::Brine {

size_t MessageCounterReader::records() const {
  if (table_.isBlank()) return 0;
  table_.check();
  return table_.used();
}

// The snapshot first: it is then no newer than the counters. Counters that have started anew may be
// behind it all the same.
std::optional<InterfaceCounters> MessageCounterReader::record(size_t index) const {
  CounterRecord const record = table_.record(index);
  if (!record.isInUse()) return std::nullopt;
  InterfaceCounters out{record.name()};
  auto const before = record.snapshot().counters;
  out.total = record.counters().counters;
  for (size_t i = 0; i < before.size(); ++i) {
    if (out.total[i] > before[i]) out.sinceSnapshot[i] = out.total[i] - before[i];
  }
  return out;
}

std::optional<InterfaceCounters> MessageCounterReader::interface(std::string_view name) const {
  std::exception_ptr damage;
  for (size_t index = 0, end = records(); index < end; ++index) {
    CounterRecord const place = table_.record(index);
    try {
      if (!place.isInUse() || place.name() != name) continue;
    } catch (Pollux::CorruptionDetectedException const&) {
      damage = std::current_exception();
      continue;
    }
    return record(index);
  }
  if (damage) std::rethrow_exception(damage);
  return std::nullopt;
}

std::vector<std::string> MessageCounterReader::interfaces() const {
  std::vector<std::string> names;
  for (size_t index = 0, end = records(); index < end; ++index) {
    CounterRecord const place = table_.record(index);
    if (place.isInUse() && !place.name().empty()) names.push_back(place.name());
  }
  return names;
}

}  // namespace Macsec::Brine
