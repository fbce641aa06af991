#include "platform/CounterRecordWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/Corruption.h"
#include "tests/platform/CounterBench.h"

namespace Macsec::Brine {
namespace {

struct Killed {};

/// Stores until the process is killed, after so many stores.
struct KilledStore {
  static inline size_t storesLeft = SIZE_MAX;
  static void store(uint64_t& word, uint64_t value,
                    std::memory_order order = std::memory_order_relaxed) {
    if (storesLeft == 0) throw Killed{};
    --storesLeft;
    SharedStore::store(word, value, order);
  }
  static void fence() {}
};
using MortalWriter = CounterRecordWriter<KilledStore>;

/// Whether the step ran to its end before the process was killed.
template <class Step>
bool killedAfter(size_t stores, Step step) {
  KilledStore::storesLeft = stores;
  try {
    step();
  } catch (Killed) {
    return true;
  }
  return false;
}

uint64_t sum(CounterLayout::Counters const& counters) {
  uint64_t sum = 0;
  for (uint64_t counter : counters) sum += counter;
  return sum;
}

class KilledWriter : public ::testing::Test {
 protected:
  KilledWriter() { bench.fill(); }
  MortalWriter writer() {
    auto const words =
        bench.memory->words().subspan(CounterLayout::recordAt(1), CounterLayout::kRecordWords);
    return MortalWriter(words, 1);
  }
  CounterRecord record() { return CounterTable(bench.memory->words()).record(1); }
  CounterTail tail() { return {record().counters().sequence, CounterTail::kNone}; }
  void restoreIs(std::vector<uint64_t> const& words) {
    std::copy(words.begin(), words.end(), bench.memory->words().begin());
  }
  std::vector<uint64_t> image() {
    return {bench.memory->words().begin(), bench.memory->words().end()};
  }
  CounterBench bench;
};

TEST_F(KilledWriter, LeavesACounterAtItsFormerOrItsNextValueAtEveryStep) {
  bench.restart();  // neither slot lags behind
  auto const former = record().counters();
  auto const sound = image();
  constexpr uint8_t kFirst = 3, kSecond = 31;
  size_t kills = 0;
  for (size_t stores = 0;; ++stores) {
    restoreIs(sound);
    CounterTail own = tail();
    bool const killed = killedAfter(stores, [&] {
      writer().add(own, kFirst);
      writer().add(own, kSecond);
    });
    auto const read = record().counters().counters;
    uint64_t const first = read[kFirst] - former.counters[kFirst];
    uint64_t const second = read[kSecond] - former.counters[kSecond];
    EXPECT_LE(second, first) << stores;
    EXPECT_LE(first, 1u);
    EXPECT_EQ(sum(read), sum(former.counters) + first + second);
    bench.restart();
    EXPECT_EQ(record().counters().counters, read) << "a new process goes on from what was read";
    bench.count(bench.one);
    EXPECT_EQ(sum(record().counters().counters), sum(read) + 1);
    EXPECT_EQ(corruptionOf([&] { bench.counters->messageCounterData(bench.one); }), "");
    if (!killed) break;
    ++kills;
  }
  EXPECT_EQ(kills, 4u + 5u);
  EXPECT_EQ(bench.memory->corruptionFiles(), 0u);
}

TEST_F(KilledWriter, LeavesTheFormerOrTheNextSnapshotAtEveryStep) {
  auto const former = record().snapshot();
  CounterLayout::Counters next{};
  next.fill(7);
  auto const sound = image();
  size_t kills = 0;
  for (size_t stores = 0;; ++stores, ++kills) {
    restoreIs(sound);
    bool const killed =
        killedAfter(stores, [&] { writer().snapshotIs(former.sequence + 1, next); });
    auto const read = record().snapshot().counters;
    EXPECT_EQ(read, killed ? former.counters : next) << stores;
    bench.counters->msgCounterSnapshotIs(bench.counters->messageCounterData(bench.one));
    EXPECT_EQ(bench.countedSinceSnapshot(bench.one), 0u);
    if (!killed) break;
  }
  EXPECT_EQ(kills, CounterLayout::kCounters + 3);
}

TEST_F(KilledWriter, LeavesNoRecordOrAWholeOneWhenItMakesOne) {
  auto const sound = image();
  size_t kills = 0;
  for (size_t stores = 0;; ++stores, ++kills) {
    restoreIs(sound);
    bool const killed = killedAfter(stores, [&] { writer().claim("Ethernet7"); });
    if (stores > 0) {
      EXPECT_EQ(record().isInUse(), !killed) << stores;
    }
    EXPECT_EQ(bench.reader().interface("Ethernet7").has_value(), !killed);
    EXPECT_EQ(bench.reader().interface("Ethernet2")->name, "Ethernet2");
    bench.restart();
    EXPECT_EQ(bench.memory->corruptionFiles(), 0u);
    if (!killed) break;
  }
  EXPECT_GT(kills, CounterLayout::kRecordWords);
}

TEST_F(KilledWriter, LeavesNoTableOrAWholeOneWhenItMakesOne) {
  size_t kills = 0;
  for (size_t stores = 0;; ++stores, ++kills) {
    bench.memory = std::make_shared<ProcessCounterMemory>();
    auto const words = bench.memory->attach(CounterLayout::wordsOf(1), CounterLayout::wordsOf(1));
    bool const killed =
        killedAfter(stores, [&] { CounterTable::create<KilledStore>(words, 4096); });
    EXPECT_EQ(CounterTable(words).isBlank(), killed) << stores;
    auto const clerk =
        Vesk::make<MessageCounters>("mka", bench.memory, MessageCountersOptions{.counts = false});
    EXPECT_EQ(clerk->messageCounterData(bench.one), clerk->emptyRecord());
    EXPECT_FALSE(bench.reader().interface("Ethernet1"));
    EXPECT_THAT(bench.reader().interfaces(), ::testing::IsEmpty());
    bench.restart();
    bench.fill();
    EXPECT_EQ(bench.counted(bench.one), 8u);
    EXPECT_EQ(bench.memory->corruptionFiles(), 0u);
    if (!killed) break;
  }
  EXPECT_EQ(kills, 9u);
}

}  // namespace
}  // namespace Macsec::Brine
