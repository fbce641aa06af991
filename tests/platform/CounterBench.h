#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/MessageCounterReader.h"
#include "platform/MessageCounters.h"

namespace Macsec::Brine {

/// A table in memory of which a test changes octets, and which outlives those who use it.
class CounterBench {
 public:
  using Direction = MessageCounterDirection;
  using Type = MessageCounterType;
  using SubType = MessageCounterFailureSubType;

  explicit CounterBench(MessageCountersOptions given = {}) : options(given) { restart(); }

  /// A new process takes the place of the former one.
  void restart() {
    counters = nullptr;
    memory->detach();
    counters = Vesk::make<MessageCounters>("mka", memory, options);
  }
  /// Counts frames of several kinds on both interfaces, and clears in between.
  void fill() {
    for (Lumo::IntfId intf : {one, two}) {
      counters->intfIs(intf);
      for (int i = 0; i < 5; ++i) count(intf);
      fail(intf, SubType::icvValidationErr);
      counters->msgCounterSnapshotIs(counters->messageCounterData(intf));
      for (int i = 0; i < 3; ++i) count(intf);
      fail(intf, SubType::distSakSetErr);
    }
  }
  void count(Lumo::IntfId intf) {
    counters->inc(intf, Direction::tx, Type::success, SubType::none);
  }
  void fail(Lumo::IntfId intf, SubType subType) {
    counters->inc(intf, Direction::rx, Type::failure, subType);
  }
  uint64_t counted(Lumo::IntfId intf) {
    return counters->value(intf, Direction::tx, Type::success, SubType::none);
  }
  uint64_t countedSinceSnapshot(Lumo::IntfId intf) {
    return counters->valueSinceSnapshot(intf, Direction::tx, Type::success, SubType::none);
  }

  std::span<uint8_t> octets() {
    auto const words = memory->words();
    return {reinterpret_cast<uint8_t*>(words.data()), words.size() * sizeof(uint64_t)};
  }
  std::span<uint8_t> header() {
    return octets().first(CounterLayout::kHeaderWords * sizeof(uint64_t));
  }
  std::span<uint8_t> record(size_t index) {
    return octets().subspan(CounterLayout::recordAt(index) * sizeof(uint64_t),
                            CounterLayout::kRecordWords * sizeof(uint64_t));
  }
  uint64_t& word(size_t record, size_t at) {
    return memory->words()[CounterLayout::recordAt(record) + at];
  }
  MessageCounterReader reader() { return MessageCounterReader(memory->words()); }

  MessageCountersOptions const options;
  Lumo::IntfId const one{"Ethernet1"}, two{"Ethernet2"};
  std::shared_ptr<ProcessCounterMemory> memory = std::make_shared<ProcessCounterMemory>();
  Vesk::Ptr<MessageCounters> counters;
};

/// The text of the corruption that this raises; empty if it raises none.
template <class Read>
std::string corruptionOf(Read read) {
  try {
    read();
  } catch (Pollux::CorruptionDetectedException const& damage) {
    return damage.what();
  }
  return "";
}

/// Every octet with each of its bits turned, and with all of them turned: runs `check` on each
/// state, told where the octet is. The octets are then as before.
template <class Check>
void withEachOctetFlipped(std::span<uint8_t> octets, Check check) {
  for (size_t at = 0; at < octets.size(); ++at) {
    for (uint8_t flip : std::initializer_list<uint8_t>{1, 2, 4, 8, 16, 32, 64, 128, 255}) {
      octets[at] ^= flip;
      check(at);
      octets[at] ^= flip;
    }
  }
}

}  // namespace Macsec::Brine
