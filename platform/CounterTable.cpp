#include "platform/CounterTable.h"

#include "platform/Corruption.h"
#include "platform/CounterWords.h"

namespace Macsec::Brine {

using namespace CounterLayout;

namespace {

uint64_t headerChecksum(std::span<uint64_t const> words) {
  uint64_t sum = 0;
  for (size_t i = 0; i < kHeaderChecksumAt; ++i) sum += load(words[i]) * weight(i);
  return sum;
}

[[noreturn]] void damaged(char const* what) {
  throw Pollux::CorruptionDetectedException(std::string("table header: ") + what);
}

}  // namespace

bool CounterTable::isBlank() const {
  for (size_t i = 0; i < kHeaderWords; ++i) {
    if (load(words_[i]) != 0) return false;
  }
  return true;
}

void CounterTable::check() const {
  if (words_.size() < kHeaderWords) damaged("the memory is too short for one");
  if (load(words_[kMagicAt]) != kMagic) damaged("this is no table of message counters");
  if (load(words_[kVersionAt]) != kVersion) damaged("the version is another");
  if (load(words_[kHeaderOctetsAt]) != kHeaderWords * sizeof(uint64_t) ||
      load(words_[kRecordOctetsAt]) != kRecordWords * sizeof(uint64_t) ||
      load(words_[kCountersAt]) != kCounters) {
    damaged("the sizes are others");
  }
  if (load(words_[kHeaderChecksumAt]) != headerChecksum(words_)) damaged("the checksum is wrong");
  static_cast<void>(used());
}

uint32_t CounterTable::capacity() const { return static_cast<uint32_t>(load(words_[kCapacityAt])); }

uint32_t CounterTable::used() const {
  uint64_t const word = load(words_[kUsedAt], std::memory_order_acquire);
  uint32_t const used = static_cast<uint32_t>(word >> 32);
  if (word != usedWord(used) || used > capacity()) damaged("the number of records is damaged");
  if (wordsOf(used) > words_.size()) damaged("the memory is too short for the records in use");
  return used;
}

CounterRecord CounterTable::record(size_t index) const {
  return CounterRecord(words_.subspan(recordAt(index), kRecordWords), index);
}

void CounterTable::create(std::span<uint64_t> words, uint32_t capacity) {
  usedIs(words, 0);
  uint64_t const header[] = {
      kMagic,   kVersion, kHeaderWords * sizeof(uint64_t), kRecordWords * sizeof(uint64_t),
      capacity, kCounters};
  for (size_t i = 0; i < kHeaderChecksumAt; ++i) SharedStore::store(words[i], header[i]);
  SharedStore::store(words[kHeaderChecksumAt], headerChecksum(words), std::memory_order_release);
}

void CounterTable::usedIs(std::span<uint64_t> words, uint32_t used) {
  SharedStore::store(words[kUsedAt], usedWord(used), std::memory_order_release);
}

}  // namespace Macsec::Brine
