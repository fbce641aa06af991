#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/CounterTable.h"

namespace Macsec::Brine {

/// The counters of one interface as a reader sees them.
struct InterfaceCounters {
  /// Empty for what was counted on interfaces without a record of their own.
  std::string name;
  CounterLayout::Counters total{};
  /// Since the counters were last cleared.
  CounterLayout::Counters sinceSnapshot{};
};

/// Reads a table of message counters that another process writes, without a lock and without
/// changing a word. Everything that is read is checked: damage raises
/// `Pollux::CorruptionDetectedException`, and a record that never stands still
/// `RecordBusyException`.
class MessageCounterReader {
 public:
  /// `words` are all words of the table and outlive the reader.
  explicit MessageCounterReader(std::span<uint64_t const> words) : table_(words) {}

  /// How many places for records to look at.
  size_t records() const;
  /// What stands there; none in a place that isn't in use.
  std::optional<InterfaceCounters> record(size_t index) const;
  /// The record of an interface; none if it has none. Damage elsewhere in the table doesn't matter,
  /// unless the record isn't found.
  std::optional<InterfaceCounters> interface(std::string_view name) const;
  /// The names of all interfaces that have a record.
  std::vector<std::string> interfaces() const;

 private:
  CounterTable table_;
};

}  // namespace Macsec::Brine
