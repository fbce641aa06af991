#include "platform/CounterRecord.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/Corruption.h"
#include "platform/CounterWords.h"
#include "runtime/Text.h"

namespace Macsec::Brine {

using namespace CounterLayout;

namespace {

constexpr int kTries = 10000;

enum class Copied { whole, beingWritten, changed, badSequence, badChecksum };

bool isSequence(uint64_t sequence, size_t slot) {
  return sequence != 0 && sequence < kSequenceEnd && sequence % 2 == slot;
}

Copied copySlot(uint64_t const* words, size_t slot, uint64_t seed, SlotReading& out) {
  out.sequence = load(words[kSequenceAt], std::memory_order_acquire);
  if (out.sequence == kBeingWritten) return Copied::beingWritten;
  if (!isSequence(out.sequence, slot)) return Copied::badSequence;
  uint64_t const checksum = load(words[kChecksumAt]);
  uint64_t expected = seed + slotShare(kSequenceAt, out.sequence);
  for (size_t i = 0; i < kCounters; ++i) {
    out.counters[i] = load(words[kFirstCounterAt + i]);
    expected += slotShare(kFirstCounterAt + i, out.counters[i]);
  }
  std::atomic_thread_fence(std::memory_order_acquire);
  if (load(words[kSequenceAt]) != out.sequence) return Copied::changed;
  return checksum == expected ? Copied::whole : Copied::badChecksum;
}

std::array<uint64_t, kNameWords> nameOf(std::span<uint64_t const> words) {
  std::array<uint64_t, kNameWords> name;
  for (size_t i = 0; i < kNameWords; ++i) name[i] = load(words[kNameAt + i]);
  return name;
}

std::string textOf(std::array<uint64_t, kNameWords> const& name) {
  char octets[kNameOctets];
  std::memcpy(octets, name.data(), kNameOctets);
  return std::string(octets, std::find(octets, octets + kNameOctets, '\0'));
}

}  // namespace

uint64_t CounterRecord::nameChecksum(std::span<uint64_t const> words, size_t index) {
  uint64_t sum = weight(kNameWords + index);
  auto const name = nameOf(words);
  for (size_t i = 0; i < kNameWords; ++i) sum += name[i] * weight(i);
  return sum;
}

bool CounterRecord::isNameSound() const {
  return load(words_[kNameChecksumAt]) == nameChecksum(words_, index_);
}

void CounterRecord::damaged(std::string const& what) const {
  std::string text = "record " + std::to_string(index_) + " ";
  if (isNameSound()) {
    Vesk::appendQuoted(text, textOf(nameOf(words_)));
  } else {
    text += "of an unreadable name";
  }
  throw Pollux::CorruptionDetectedException(text + ": " + what);
}

bool CounterRecord::isInUse() const {
  uint64_t const state = load(words_[kStateAt], std::memory_order_acquire);
  if (state != 0 && state != kInUse) damaged("the state is neither in use nor unused");
  return state == kInUse;
}

std::string CounterRecord::name() const {
  if (!isNameSound()) damaged("the name doesn't fit its checksum");
  return textOf(nameOf(words_));
}

void CounterRecord::checkName(std::string_view name) const {
  if (!isInUse()) damaged("the state says unused");
  if (!isNameSound()) damaged("the name doesn't fit its checksum");
  if (!isNamed(name)) damaged("the name is that of another interface");
}

bool CounterRecord::isOfOther(std::string_view name) const {
  return !isInUse() || (isNameSound() && !isNamed(name));
}

bool CounterRecord::isNamed(std::string_view name) const {
  char octets[kNameOctets] = {};
  name.copy(octets, kNameOctets);
  return std::memcmp(nameOf(words_).data(), octets, kNameOctets) == 0;
}

SlotReading CounterRecord::counters() const { return area(0, kCounterAreaAt, "counters"); }

SlotReading CounterRecord::snapshot() const { return area(1, kSnapshotAreaAt, "snapshot"); }

// A lone writer has one slot in hand at a time. Two that are being written may be seen when it
// moves on between the two looks, but not each time.
SlotReading CounterRecord::area(size_t area, size_t at, char const* what) const {
  uint64_t const name = load(words_[kNameChecksumAt]);
  SlotReading readings[2];
  bool sawProgress = false;
  for (int i = 0; i < kTries; ++i) {
    Copied copied[2];
    for (size_t slot = 0; slot < 2; ++slot) {
      copied[slot] = copySlot(words_.data() + at + slot * kSlotWords, slot,
                              slotSeed(index_, name, area, slot), readings[slot]);
      auto const fault = [&](char const* text) {
        damaged(std::string(what) + ", slot " + std::to_string(slot) + ": " + text);
      };
      if (copied[slot] == Copied::badSequence) fault("no writer gives such a sequence number");
      if (copied[slot] == Copied::badChecksum) fault("the words don't fit their checksum");
      sawProgress |= copied[slot] != Copied::beingWritten;
    }
    bool const whole[2] = {copied[0] == Copied::whole, copied[1] == Copied::whole};
    if (whole[0] && whole[1]) return readings[readings[1].sequence > readings[0].sequence];
    if (whole[1]) return readings[1];
    // Slot 0 was looked at first: it is the newest only if it still is what it was.
    if (whole[0] && load(words_[at + kSequenceAt]) == readings[0].sequence) return readings[0];
  }
  if (!sawProgress) damaged(std::string(what) + ": both slots are being written");
  throw RecordBusyException("record " + std::to_string(index_) + " changed during each of " +
                            std::to_string(kTries) + " reads; read it again");
}

}  // namespace Macsec::Brine
