#include "platform/MessageCounters.h"

#include <algorithm>

#include "platform/Corruption.h"
#include "platform/CounterWords.h"
#include "runtime/Assert.h"
#include "runtime/Trace.h"

// Counting, reading, clearing. How a table is taken up stands in MessageCountersTakeUp.cpp.

namespace Macsec::Brine {

namespace {

Vesk::TraceHandle traceHandle("Macsec");

}  // namespace

MessageCounters::MessageCounters(Vesk::Name const& name, std::shared_ptr<CounterMemory> memory,
                                 MessageCountersOptions options)
    : name_(name), memory_(std::move(memory)), options_(options) {
  VESK_ASSERT(options_.capacity > 0);
  takeUp();
}

Vesk::Ptr<MessageCounters> MessageCounters::inProcess(Vesk::Name const& name) {
  return Vesk::make<MessageCounters>(name, std::make_shared<ProcessCounterMemory>());
}

void MessageCounters::intfIs(Lumo::IntfId intfId) {
  VESK_ASSERT(options_.counts);
  if (isAttached() && !place(intfId)) claim(intfId);
}

void MessageCounters::expect(Lumo::IntfId intfId) const {
  size_t const* const own = place(intfId);
  if (!own || words_.empty()) return;
  __builtin_prefetch(&entries_[*own], 1);
  uint64_t const* const slots = recordWords(*own).data() + CounterLayout::kCounterAreaAt;
  __builtin_prefetch(slots, 1);
  __builtin_prefetch(slots + CounterLayout::kSlotWords, 1);
}

void MessageCounters::inc(Lumo::IntfId intfId, Direction direction, Type type, SubType subType) {
  VESK_ASSERT(options_.counts);
  if (!isAttached()) return;
  size_t const* const own = place(intfId);
  size_t const index = own ? *own : 0;
  Entry& entry = entries_[index];
  if (entry.isFrozen) return;
  Writer(recordWords(index), index)
      .add(entry.tail, static_cast<uint8_t>(MessageCounterData::indexOf(direction, type, subType)));
}

uint64_t MessageCounters::value(Lumo::IntfId intfId, Direction direction, Type type,
                                SubType subType) {
  return messageCounterData(intfId).value(direction, type, subType);
}

// Counters that have started anew may be behind their snapshot for a moment.
uint64_t MessageCounters::valueSinceSnapshot(Lumo::IntfId intfId, Direction direction, Type type,
                                             SubType subType) {
  uint64_t const before = snapshot(intfId).value(direction, type, subType);
  uint64_t const now = value(intfId, direction, type, subType);
  return now > before ? now - before : 0;
}

MessageCounterData MessageCounters::messageCounterData(Lumo::IntfId intfId) {
  size_t const* const index = checkedPlace(intfId);
  if (!index) return emptyRecord();
  CounterRecord const record = table().record(*index);
  static_cast<void>(record.snapshot());
  return MessageCounterData(intfId, record.counters().counters);
}

MessageCounterData MessageCounters::snapshot(Lumo::IntfId intfId) {
  size_t const* const index = checkedPlace(intfId);
  if (!index) return emptyRecord();
  return MessageCounterData(intfId, table().record(*index).snapshot().counters);
}

MessageCounterData const& MessageCounters::emptyRecord() const {
  static MessageCounterData const empty;
  return empty;
}

std::optional<InterfaceCounters> MessageCounters::counters(Lumo::IntfId intfId) {
  size_t const* const index = checkedPlace(intfId);
  if (!index) return {};
  return reader().record(*index);
}

void MessageCounters::msgCounterSnapshotIs(MessageCounterData const& record) {
  if (record == emptyRecord()) return;
  size_t const* const index = checkedPlace(record.intfId());
  if (!index) return;
  uint64_t const sequence = table().record(*index).snapshot().sequence;
  Writer(recordWords(*index), *index).snapshotIs(sequence + 1, record.counters());
}

MessageCounterReader MessageCounters::reader() {
  static_cast<void>(isAttached());
  return MessageCounterReader(words_);
}

void MessageCounters::corruptionDetected(std::string_view message) {
  std::string const text =
      "BrineMap::corruptionDetected() " + std::string(name_.view()) + " " + std::string(message);
  if (!options_.recovers) throw Pollux::CorruptionDetectedException(text);
  VESK_TRACE(1, ": ", text);
  corruptionFileIs(text);
}

// The octets are those of the records in use, or all if their number isn't known. They outlive the
// memory.
void MessageCounters::corruptionFileIs(std::string_view text) {
  std::vector<uint8_t> octets;
  size_t const wanted = entries_.empty() ? words_.size() : CounterLayout::recordAt(entries_.size());
  octets.reserve(wanted * sizeof(uint64_t));
  for (uint64_t const& shared : words_.first(std::min(wanted, words_.size()))) {
    uint64_t const word = load(shared);
    auto const* const bytes = reinterpret_cast<uint8_t const*>(&word);
    octets.insert(octets.end(), bytes, bytes + sizeof word);
  }
  words_ = {};
  memory_->detach();
  memory_->corruptionFileIs(text, octets);
  hasCorruptionFile_ = true;
}

// The record of an interface, found sound up to its name; null for an interface without one. A
// process that doesn't count learns here of records that have come, or gone to another interface.
size_t const* MessageCounters::checkedPlace(Lumo::IntfId intfId) {
  if (!isAttached()) return nullptr;
  if (!options_.counts && table().isBlank()) return nullptr;
  table().check();
  auto const name = intfId.stringValue().view();
  size_t const* index = place(intfId);
  if (!options_.counts && (!index || table().record(*index).isOfOther(name))) {
    follow();
    index = place(intfId);
  }
  if (index) table().record(*index).checkName(name);
  return index;
}

size_t const* MessageCounters::place(Lumo::IntfId intfId) const {
  if (intfId.index() >= places_.size()) return nullptr;
  size_t const& index = places_[intfId.index()];
  return index < entries_.size() ? &index : nullptr;
}

std::span<uint64_t> MessageCounters::recordWords(size_t index) const {
  return words_.subspan(CounterLayout::recordAt(index), CounterLayout::kRecordWords);
}

}  // namespace Macsec::Brine
