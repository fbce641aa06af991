#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/MessageCounterData.h"

/// The table of message counters as it lies in memory that processes share: a header and then
/// records of one size, all of it 64-bit words in the byte order of the machine.
///
///     header                                record
///     +0   magic                            +0    state: in use, or 0
///     +1   version                          +1    checksum of index and name
///     +2   octets of the header             +2    name, 112 octets, filled up with NUL
///     +3   octets of a record
///     +4   capacity, in records             +16   counters, slot 0  \  written by the process
///     +5   counters in a slot               +50   counters, slot 1  /  that counts
///     +6   checksum of the above            +84   snapshot, slot 0  \  written by the process
///     +7   records used, and their          +118  snapshot, slot 1  /  that clears
///          complement in the lower half
///     +8   record 0, the empty              slot
///          interface id                     +0    sequence number, or "being written"
///     +160 record 1                         +1    checksum
///                                           +2    32 counters: `MessageCounterData::indexOf`
///
/// The header but for its last word is written once, before the first record, and its magic at the
/// end of that; so are state, name and checksum of the name. A record that was never in use is all
/// 0.
///
/// Of the two slots of an area the one with the greater sequence number counts. Slot 0 has the even
/// numbers, slot 1 the odd ones. A writer marks the older slot as being written, changes it, and
/// gives it the next number: at any moment, and wherever the writer dies, one slot is whole. A
/// reader copies a slot and looks whether the number is still the same.
///
/// A checksum adds up each word times an odd number that belongs to its place. So a change within a
/// single word always shows, and one more in a counter is one addition to the checksum: a writer
/// that counts on a damaged slot carries the damage along and doesn't hide it.
namespace Macsec::Brine::CounterLayout {

using Counters = MessageCounterData::Counters;

constexpr uint64_t kMagic = 0x544e'554f'4341'4b4d;  // "MKACOUNT" where low octets go first
constexpr uint64_t kVersion = 3;

constexpr size_t kMagicAt = 0;
constexpr size_t kVersionAt = 1;
constexpr size_t kHeaderOctetsAt = 2;
constexpr size_t kRecordOctetsAt = 3;
constexpr size_t kCapacityAt = 4;
constexpr size_t kCountersAt = 5;
constexpr size_t kHeaderChecksumAt = 6;
constexpr size_t kUsedAt = 7;
constexpr size_t kHeaderWords = 8;

constexpr size_t kSequenceAt = 0;
constexpr size_t kChecksumAt = 1;
constexpr size_t kFirstCounterAt = 2;
constexpr size_t kCounters = MessageCounterData::kCounters;
constexpr size_t kSlotWords = kFirstCounterAt + kCounters;
constexpr size_t kAreaWords = 2 * kSlotWords;

constexpr size_t kStateAt = 0;
constexpr size_t kNameChecksumAt = 1;
constexpr size_t kNameAt = 2;
constexpr size_t kNameWords = 14;
constexpr size_t kNameOctets = kNameWords * sizeof(uint64_t);
constexpr size_t kCounterAreaAt = kNameAt + kNameWords;
constexpr size_t kSnapshotAreaAt = kCounterAreaAt + kAreaWords;
constexpr size_t kRecordWords = kSnapshotAreaAt + kAreaWords;

// What each MKPDU writes of a slot lies in one line of memory.
constexpr size_t kLineWords = 8;
static_assert(kRecordWords % kLineWords == 0 && kCounterAreaAt % kLineWords == 0 &&
              kSlotWords % kLineWords + kFirstCounterAt + 2 <= kLineWords);

/// State of a record in use. No octet of it is 0, so that a damaged one isn't taken for unused.
constexpr uint64_t kInUse = 0x7265'636f'7264'2121;
/// Sequence numbers are below this: none, not even with one octet changed, is `kBeingWritten`.
constexpr uint64_t kSequenceEnd = uint64_t{1} << 48;
constexpr uint64_t kBeingWritten = 0xb5b5'0000'0000'0000;

constexpr size_t wordsOf(size_t records) { return kHeaderWords + records * kRecordWords; }
constexpr size_t recordAt(size_t index) { return wordsOf(index); }

/// The odd number of a place.
constexpr uint64_t weight(uint64_t place) { return 0x9e37'79b9'7f4a'7c15 * (2 * place + 1); }

/// Where the checksum of a slot begins: belongs to the record, its name, the area and the slot.
constexpr uint64_t slotSeed(size_t record, uint64_t nameChecksum, size_t area, size_t slot) {
  return nameChecksum + weight(kSlotWords + (2 * record + area) * 2 + slot);
}
/// What a word of a slot, counted from the slot's beginning, adds to its checksum.
constexpr uint64_t slotShare(size_t at, uint64_t value) { return value * weight(at); }

constexpr uint64_t usedWord(uint32_t used) { return uint64_t{used} << 32 | uint32_t(~used); }

}  // namespace Macsec::Brine::CounterLayout
