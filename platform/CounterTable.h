#pragma once

#include <cstdint>
#include <span>

#include "platform/CounterRecord.h"

namespace Macsec::Brine {

/// Reads the table as a whole: the header, and where its records lie. Raises
/// `Pollux::CorruptionDetectedException` for a header that isn't that of a table.
class CounterTable {
 public:
  explicit CounterTable(std::span<uint64_t const> words) : words_(words) {}

  /// Memory that nobody has made a table of yet: its header is all 0.
  bool isBlank() const;
  /// Raises unless this is a sound table of this version.
  void check() const;
  uint32_t capacity() const;
  /// How many records, from the first on, are in use or have been.
  uint32_t used() const;
  CounterRecord record(size_t index) const;

  /// Makes a header; the table then has no records.
  static void create(std::span<uint64_t> words, uint32_t capacity);
  static void usedIs(std::span<uint64_t> words, uint32_t used);

 private:
  std::span<uint64_t const> words_;
};

}  // namespace Macsec::Brine
