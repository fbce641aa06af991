#pragma once

#include <cstdint>
#include <span>

#include "platform/CounterRecord.h"
#include "platform/CounterWords.h"

namespace Macsec::Brine {

/// Reads the table as a whole: the header, and where its records lie. Raises
/// `Pollux::CorruptionDetectedException` for a header that isn't that of a table.
class CounterTable {
 public:
  explicit CounterTable(std::span<uint64_t const> words) : words_(words) {}

  /// Memory that nobody has made a table of yet, or not wholly: the magic is written last. It has
  /// no octet 0, so that a damaged one isn't taken for one that is missing.
  bool isBlank() const;
  /// Raises unless this is a sound table of this version.
  void check() const;
  uint32_t capacity() const;
  /// How many records, from the first on, are in use or have been.
  uint32_t used() const;
  CounterRecord record(size_t index) const;

  /// Makes a header; the table then has no records.
  template <class Store = SharedStore>
  static void create(std::span<uint64_t> words, uint32_t capacity) {
    using namespace CounterLayout;
    Store::store(words[kMagicAt], 0);
    Store::fence();
    Store::store(words[kVersionAt], kVersion);
    Store::store(words[kHeaderOctetsAt], kHeaderWords * sizeof(uint64_t));
    Store::store(words[kRecordOctetsAt], kRecordWords * sizeof(uint64_t));
    Store::store(words[kCapacityAt], capacity);
    Store::store(words[kCountersAt], kCounters);
    Store::store(words[kHeaderChecksumAt], headerChecksum(words));
    usedIs<Store>(words, 0);
    Store::store(words[kMagicAt], kMagic, std::memory_order_release);
  }
  template <class Store = SharedStore>
  static void usedIs(std::span<uint64_t> words, uint32_t used) {
    using namespace CounterLayout;
    Store::store(words[kUsedAt], usedWord(used), std::memory_order_release);
  }

 private:
  static uint64_t headerChecksum(std::span<uint64_t const> words);

  std::span<uint64_t const> words_;
};

}  // namespace Macsec::Brine
