#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/CounterLayout.h"

namespace Macsec::Brine {

/// A record that changed during each of many reads. It is sound: read it again.
class RecordBusyException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The newest whole slot of an area.
struct SlotReading {
  uint64_t sequence = 0;
  CounterLayout::Counters counters{};
};

/// Reads one record of the table, which another process may be writing. Everything that is read is
/// checked: a record that isn't what its writers left raises `Pollux::CorruptionDetectedException`,
/// which names the record, its interface and what is wrong.
class CounterRecord {
 public:
  /// `words` are those of the record with this index.
  CounterRecord(std::span<uint64_t const> words, size_t index) : words_(words), index_(index) {}

  bool isInUse() const;
  /// The name of the interface; empty for the empty interface id.
  std::string name() const;
  /// Raises unless the record is in use and has this name.
  void checkName(std::string_view name) const;
  /// Whether the record is unused, or the sound record of another name.
  bool isOfOther(std::string_view name) const;
  /// Both slots that are at rest are checked. Throws `RecordBusyException` when no slot stands
  /// still for long enough.
  SlotReading counters() const;
  /// What the counters were when they were last cleared; all 0 if they never were.
  SlotReading snapshot() const;

  static uint64_t nameChecksum(std::span<uint64_t const> words, size_t index);

 private:
  SlotReading area(size_t area, size_t at, char const* what) const;
  bool isNameSound() const;
  bool isNamed(std::string_view name) const;
  [[noreturn]] void damaged(std::string const& what) const;

  std::span<uint64_t const> words_;
  size_t index_;
};

}  // namespace Macsec::Brine
