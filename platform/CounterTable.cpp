#include "platform/CounterTable.h"

#include "platform/Corruption.h"
#include "platform/CounterWords.h"

namespace Macsec::Brine {

using namespace CounterLayout;

namespace {

[[noreturn]] void damaged(char const* what) {
  throw Pollux::CorruptionDetectedException(std::string("table header: ") + what);
}

}  // namespace

uint64_t CounterTable::headerChecksum(std::span<uint64_t const> words) {
  uint64_t sum = kMagic * weight(kMagicAt);
  for (size_t i = kMagicAt + 1; i < kHeaderChecksumAt; ++i) sum += load(words[i]) * weight(i);
  return sum;
}

bool CounterTable::isBlank() const {
  return words_.size() >= kHeaderWords && load(words_[kMagicAt], std::memory_order_acquire) == 0;
}

void CounterTable::check() const {
  if (words_.size() < kHeaderWords) damaged("the memory is too short for one");
  if (load(words_[kMagicAt], std::memory_order_acquire) != kMagic)
    damaged("this is no table of message counters");
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

}  // namespace Macsec::Brine
