#include <algorithm>
#include <exception>

#include "platform/Corruption.h"
#include "platform/CounterWords.h"
#include "platform/MessageCounters.h"
#include "runtime/Assert.h"
#include "runtime/Trace.h"

// How a table is taken up: made, continued, or repaired where it is damaged; and how its records
// are given to interfaces.

namespace Macsec::Brine {

using namespace CounterLayout;

namespace {

Vesk::TraceHandle traceHandle("Macsec");

constexpr size_t kNowhere = SIZE_MAX;

}  // namespace

// A system that has no memory to give now may have some at the next use.
bool MessageCounters::isAttached() {
  if (!words_.empty() && memory_->isWhole()) return true;
  if (!words_.empty()) letGoOfLost();
  try {
    takeUp();
  } catch (std::exception const& failure) {
    words_ = {};
    memory_->detach();
    VESK_TRACE(1, ": no memory for ", name_,
               ", nothing is counted: ", std::string_view(failure.what()));
  }
  return !words_.empty();
}

// Whoever has cut the memory short has cut off what was counted.
void MessageCounters::letGoOfLost() {
  VESK_TRACE(1, ": ", name_, ": the memory was cut short, and is taken up again");
  words_ = {};
  memory_->detach();
}

void MessageCounters::takeUp() {
  size_t const records = std::max<size_t>(entries_.size(), 1);
  words_ = memory_->attach(wordsOf(records), wordsOf(options_.capacity));
  if (!options_.counts) return;
  takeUpHeader();
  uint32_t const used = table().used();
  std::vector<Entry> const former = entries_;
  free_.clear();
  entries_.resize(used);
  keepDamage();
  std::fill(places_.begin(), places_.end(), kNowhere);
  for (size_t index = 0; index < used; ++index) takeUpRecord(index);
  hasCorruptionFile_ = false;
  if (!place(Lumo::IntfId())) claim(Lumo::IntfId());
  for (Entry const& entry : former) {
    if (entry.isUsed && !place(entry.intfId)) claim(entry.intfId);
  }
}

// A table that this process has known keeps its records, which tell by themselves whether they are
// sound. One that it doesn't know may be anything.
void MessageCounters::takeUpHeader() {
  if (table().isBlank() && entries_.empty()) {
    return CounterTable::create(words_, options_.capacity);
  }
  try {
    table().check();
    if (table().capacity() == options_.capacity) return;
    throw Pollux::CorruptionDetectedException("table header: the capacity is another");
  } catch (Pollux::CorruptionDetectedException const& damage) {
    VESK_TRACE(1, ": ", name_, " is made anew: ", std::string_view(damage.what()));
    if (!hasCorruptionFile_) {
      corruptionFileIs(damage.what());
      words_ = memory_->attach(wordsOf(std::max<size_t>(entries_.size(), 1)),
                               wordsOf(options_.capacity));
    }
  }
  uint32_t const used = static_cast<uint32_t>(entries_.size());
  if (used == 0) {
    for (uint64_t& word : words_) SharedStore::store(word, 0);
  }
  CounterTable::create(words_, options_.capacity);
  CounterTable::usedIs(words_, used);
}

// What is damaged is kept as it was found, before anything is written.
void MessageCounters::keepDamage() {
  if (!options_.recovers || hasCorruptionFile_) return;
  for (size_t index = 0; index < entries_.size(); ++index) {
    try {
      CounterRecord const record = table().record(index);
      if (!record.isInUse()) continue;
      static_cast<void>(record.name());
      static_cast<void>(record.snapshot());
      static_cast<void>(record.counters());
    } catch (Pollux::CorruptionDetectedException const& damage) {
      corruptionFileIs(damage.what());
      words_ = memory_->attach(wordsOf(entries_.size()), wordsOf(options_.capacity));
      return;
    }
  }
}

// Both slots of the counters get the same counts, so that none lags behind; the writer that is gone
// may have been in the midst of one.
void MessageCounters::takeUpRecord(size_t index) {
  CounterRecord const record = table().record(index);
  try {
    if (!record.isInUse()) {
      free_.push_back(index);
      return;
    }
    Lumo::IntfId const intfId{Vesk::String8(record.name())};
    static_cast<void>(record.snapshot());
    auto const newest = record.counters();
    Writer(recordWords(index), index).countersAre(newest.sequence + 1, newest.counters);
    entryIs(index, intfId, {newest.sequence + 1, CounterTail::kNone});
  } catch (Pollux::CorruptionDetectedException const& damage) {
    repair(index, damage.what());
  }
}

void MessageCounters::repair(size_t index, std::string_view damage) {
  VESK_TRACE(1, ": ", name_, ": ", damage);
  bool isKnown = entries_[index].isUsed;
  Lumo::IntfId intfId = entries_[index].intfId;
  try {
    intfId = Lumo::IntfId(Vesk::String8(table().record(index).name()));
    isKnown = true;
  } catch (Pollux::CorruptionDetectedException const&) {
  }
  Writer writer(recordWords(index), index);
  if (!options_.recovers) {
    entryIs(index, intfId, {});
    entries_[index].isFrozen = true;
  } else if (isKnown) {
    entryIs(index, intfId, writer.claim(intfId.stringValue().view()));
  } else {
    writer.release();
    free_.push_back(index);
  }
}

void MessageCounters::claim(Lumo::IntfId intfId) {
  auto const name = intfId.stringValue().view();
  if (name.size() > kNameOctets) {
    VESK_TRACE(3, ": ", intfId, " has too long a name for a record of its own");
    return;
  }
  size_t const index = freeRecord();
  if (index == kNowhere) {
    VESK_TRACE(3, ": no record is left for ", intfId);
    return;
  }
  entryIs(index, intfId, Writer(recordWords(index), index).claim(name));
  CounterTable::usedIs(words_, static_cast<uint32_t>(entries_.size()));
}

// The first record is that of the empty interface id.
size_t MessageCounters::freeRecord() {
  if (!free_.empty()) {
    auto const least = std::min_element(free_.begin(), free_.end());
    size_t const index = *least;
    free_.erase(least);
    return index;
  }
  if (entries_.size() == options_.capacity) return kNowhere;
  words_ = memory_->attach(wordsOf(entries_.size() + 1), wordsOf(options_.capacity));
  entries_.emplace_back();
  return entries_.size() - 1;
}

void MessageCounters::entryIs(size_t index, Lumo::IntfId intfId, CounterTail tail) {
  entryDel(index);
  entries_[index] = {intfId, tail, true, false};
  if (places_.size() <= intfId.index()) places_.resize(intfId.index() + 1, kNowhere);
  places_[intfId.index()] = index;
}

void MessageCounters::entryDel(size_t index) {
  Entry& entry = entries_[index];
  if (entry.isUsed && places_[entry.intfId.index()] == index) {
    places_[entry.intfId.index()] = kNowhere;
  }
  entry = {};
}

// A process that doesn't count looks which records there are. A damaged one stays where it was: it
// shows when it is read.
void MessageCounters::follow() {
  uint32_t const used = table().used();
  for (size_t index = used; index < entries_.size(); ++index) entryDel(index);
  entries_.resize(used);
  for (size_t index = 0; index < used; ++index) {
    try {
      CounterRecord const record = table().record(index);
      if (record.isInUse()) {
        entryIs(index, Lumo::IntfId(Vesk::String8(record.name())), {});
      } else {
        entryDel(index);
      }
    } catch (Pollux::CorruptionDetectedException const& damage) {
      VESK_TRACE(3, ": ", name_, ": ", std::string_view(damage.what()));
    }
  }
}

}  // namespace Macsec::Brine
