#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "fuzz/FuzzWorld.h"
#include "fuzz/Input.h"
#include "fuzz/Require.h"
#include "platform/Corruption.h"
#include "platform/CounterRecordWriter.h"
#include "platform/MessageCounters.h"

// Any octets as damage to a table of message counters that is read: it is found or does no harm,
// and who counts takes the table up again. Damage within a single word is always found.

namespace {

using namespace Macsec::Brine;
using Fuzz::Input;
using Fuzz::require;

using Words = std::vector<uint64_t>;

std::vector<Lumo::IntfId> interfaces() {
  return {Lumo::IntfId("Ethernet1"), Lumo::IntfId("Ethernet2")};
}

void count(MessageCounters& counters) {
  for (Lumo::IntfId const intfId : interfaces()) {
    counters.intfIs(intfId);
    for (int i = 0; i < 3; ++i) {
      counters.inc(intfId, MessageCounters::Direction::rx, MessageCounters::Type::success, {});
    }
    counters.msgCounterSnapshotIs(counters.messageCounterData(intfId));
    counters.inc(intfId, MessageCounters::Direction::tx, MessageCounters::Type::success, {});
  }
}

Words soundWords() {
  Fuzz::FuzzWorld world;
  Vesk::WorldScope const scope(world);
  auto const memory = std::make_shared<ProcessCounterMemory>();
  auto const counters = Vesk::make<MessageCounters>("mka", memory, MessageCountersOptions{});
  count(*counters);
  auto const words = memory->words();
  return {words.begin(), words.end()};
}

// What a reader finds; nothing if it finds damage.
std::optional<Words> readingOf(std::span<uint64_t const> words) {
  MessageCounterReader const reader(words);
  try {
    Words found{reader.records()};
    for (std::string const& name : reader.interfaces()) {
      auto const counters = reader.interface(name);
      if (!counters) continue;
      found.insert(found.end(), counters->total.begin(), counters->total.end());
      found.insert(found.end(), counters->sinceSnapshot.begin(), counters->sinceSnapshot.end());
    }
    for (size_t index = 0; index < reader.records(); ++index) {
      found.push_back(reader.record(index) ? index : ~index);
    }
    return found;
  } catch (Pollux::CorruptionDetectedException const&) {
  } catch (RecordBusyException const&) {
  }
  return std::nullopt;
}

// One change of a word after the other, or whole slots and headers with right checksums.
class Damage {
 public:
  Damage(Input& in, Words& words) : in_(in), words_(words) {}

  void put() {
    uint8_t const how = in_.octet();
    size_t const at = in_.word() % words_.size();
    if (how < 160) return change(at, how);
    isSingle_ = false;
    if (how < 176) return CounterTable::create<>(words_, in_.word());
    if (how < 192) return CounterTable::usedIs<>(words_, in_.word());
    if (how < 200) return words_.resize(at);
    size_t const record = in_.below(4);
    if (CounterLayout::recordAt(record) + CounterLayout::kRecordWords > words_.size()) return;
    auto const part =
        std::span(words_).subspan(CounterLayout::recordAt(record), CounterLayout::kRecordWords);
    CounterRecordWriter<> writer(part, record);
    CounterLayout::Counters counters;
    for (uint64_t& counter : counters) counter = in_.octet();
    if (how < 220) return writer.countersAre(1 + in_.octet(), counters);
    if (how < 240) return writer.snapshotIs(1 + in_.octet(), counters);
    auto const name = in_.take(in_.octet() % 120);
    std::string_view const text(reinterpret_cast<char const*>(name.data()), name.size());
    static_cast<void>(writer.claim(text.substr(0, CounterLayout::kNameOctets)));
  }
  bool isSingle() const { return isSingle_ && changes_ == 1; }

 private:
  void change(size_t at, uint8_t how) {
    uint64_t const former = words_[at];
    words_[at] ^= static_cast<uint64_t>(in_.octet()) << how % 64;
    if (how >= 128) words_[at] = CounterLayout::kBeingWritten;
    changes_ += former != words_[at];
    isSingle_ &= how < 128;
  }

  Input& in_;
  Words& words_;
  unsigned changes_ = 0;
  bool isSingle_ = true;
};

// The memory of another process, which comes back.
void takeUp(Words const& words, bool recovers) {
  Fuzz::FuzzWorld world;
  Vesk::WorldScope const scope(world);
  auto const memory = std::make_shared<ProcessCounterMemory>();
  std::ranges::copy(words, memory->attach(words.size(), words.size()).begin());
  memory->detach();
  try {
    MessageCountersOptions const options{.recovers = recovers, .capacity = 8};
    auto const counters = Vesk::make<MessageCounters>("mka", memory, options);
    count(*counters);
    for (Lumo::IntfId const intfId : interfaces()) static_cast<void>(counters->counters(intfId));
    if (recovers) require(readingOf(memory->words()).has_value(), "damage stays in the table");
  } catch (Pollux::CorruptionDetectedException const&) {
    require(!recovers, "a table that recovers gives up");
  } catch (RecordBusyException const&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  static Words const sound = soundWords();
  static auto const whole = readingOf(sound);
  Input in({octets, size});
  bool const recovers = in.chance(50);
  Words words = sound;
  Damage damage(in, words);
  while (!in.isOver() && !words.empty()) damage.put();
  auto const reading = readingOf(words);
  require(!damage.isSingle() || !reading || reading == whole, "damage within a word isn't found");
  takeUp(words, recovers);
  return 0;
}
