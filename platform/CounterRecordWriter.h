#pragma once

#include <cstring>
#include <string_view>

#include "platform/CounterRecord.h"
#include "platform/CounterWords.h"

namespace Macsec::Brine {

/// What the process that counts remembers of a record: the number of its newest slot, and the
/// counter by which the older slot lags behind.
struct CounterTail {
  static constexpr uint8_t kNone = 0xff;
  static_assert(CounterLayout::kCounters < kNone);

  uint64_t sequence = 0;
  uint8_t lag = kNone;
};

/// Writes one record of the table. The counters have one writer at a time, the snapshot too.
template <class Store = SharedStore>
class CounterRecordWriter {
 public:
  using Counters = CounterLayout::Counters;

  CounterRecordWriter(std::span<uint64_t> words, size_t index) : words_(words), index_(index) {}

  /// Makes this the record of an interface, with everything 0. `name` has at most
  /// `CounterLayout::kNameOctets`.
  CounterTail claim(std::string_view name) {
    using namespace CounterLayout;
    release();
    for (size_t i = kStateAt + 1; i < kRecordWords; ++i) Store::store(words_[i], 0);
    char octets[kNameOctets] = {};
    name.copy(octets, kNameOctets);
    for (size_t i = 0; i < kNameWords; ++i) {
      uint64_t word;
      std::memcpy(&word, octets + i * sizeof word, sizeof word);
      Store::store(words_[kNameAt + i], word);
    }
    Store::store(words_[kNameChecksumAt], CounterRecord::nameChecksum(words_, index_));
    for (uint64_t sequence = 1; sequence <= 2; ++sequence) {
      countersAre(sequence, {});
      snapshotIs(sequence, {});
    }
    Store::store(words_[kStateAt], kInUse, std::memory_order_release);
    return {2, CounterTail::kNone};
  }
  /// Makes the record unused.
  void release() {
    Store::store(words_[CounterLayout::kStateAt], 0);
    Store::fence();
  }

  /// Adds one to a counter: writes the older slot, and in it no more than the two changes by which
  /// it differs from what is to be.
  void add(CounterTail& tail, uint8_t counter) {
    using namespace CounterLayout;
    uint64_t const next = tail.sequence + 1;
    uint64_t* const slot = slotOf(kCounterAreaAt, next);
    uint64_t checksum = load(slot[kChecksumAt]);
    checksum += slotShare(kSequenceAt, next - load(slot[kSequenceAt]));
    mark(slot);
    if (tail.lag != CounterTail::kNone) checksum += addOne(slot, tail.lag);
    checksum += addOne(slot, counter);
    publish(slot, next, checksum);
    tail = {next, counter};
  }
  /// Writes a whole slot with the number that follows on `sequence - 1`.
  void countersAre(uint64_t sequence, Counters const& counters) {
    slotIs(0, CounterLayout::kCounterAreaAt, sequence, counters);
  }
  void snapshotIs(uint64_t sequence, Counters const& counters) {
    slotIs(1, CounterLayout::kSnapshotAreaAt, sequence, counters);
  }

 private:
  uint64_t* slotOf(size_t at, uint64_t sequence) const {
    return words_.data() + at + (sequence % 2) * CounterLayout::kSlotWords;
  }
  static void mark(uint64_t* slot) {
    Store::store(slot[CounterLayout::kSequenceAt], CounterLayout::kBeingWritten);
    Store::fence();
  }
  static uint64_t addOne(uint64_t* slot, uint8_t counter) {
    size_t const at = CounterLayout::kFirstCounterAt + counter;
    Store::store(slot[at], load(slot[at]) + 1);
    return CounterLayout::slotShare(at, 1);
  }
  static void publish(uint64_t* slot, uint64_t sequence, uint64_t checksum) {
    Store::store(slot[CounterLayout::kChecksumAt], checksum);
    Store::store(slot[CounterLayout::kSequenceAt], sequence, std::memory_order_release);
  }
  void slotIs(size_t area, size_t at, uint64_t sequence, Counters const& counters) {
    using namespace CounterLayout;
    uint64_t* const slot = slotOf(at, sequence);
    mark(slot);
    uint64_t checksum = slotSeed(index_, load(words_[kNameChecksumAt]), area, sequence % 2) +
                        slotShare(kSequenceAt, sequence);
    for (size_t i = 0; i < kCounters; ++i) {
      Store::store(slot[kFirstCounterAt + i], counters[i]);
      checksum += slotShare(kFirstCounterAt + i, counters[i]);
    }
    publish(slot, sequence, checksum);
  }

  std::span<uint64_t> words_;
  size_t index_;
};

}  // namespace Macsec::Brine
