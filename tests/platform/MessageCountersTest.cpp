#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/Corruption.h"
#include "tests/platform/AllocationCount.h"
#include "tests/platform/CounterBench.h"
#include "tests/support/TestWorld.h"

namespace Macsec::Brine {
namespace {

using ::testing::ElementsAre;

using Direction = CounterBench::Direction;
using Type = CounterBench::Type;
using SubType = CounterBench::SubType;

class Counters : public ::testing::Test {
 protected:
  Counters() { Vesk::TraceHandle::streamLevelsIs("Macsec", Vesk::kAllTraceLevels); }
  ~Counters() override { Vesk::TraceHandle::streamLevelsIs("", 0); }

  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  CounterBench bench;
};

TEST_F(Counters, EachKindOfEachInterfaceCountsForItself) {
  uint64_t times = 0;
  std::vector<Lumo::IntfId> const interfaces{bench.one, bench.two};
  for (int pass = 0; pass < 2; ++pass) {
    times = 0;
    for (Lumo::IntfId intf : interfaces) {
      bench.counters->intfIs(intf);
      for (size_t i = 0; i < MessageCounterData::kCounters; ++i) {
        auto const [direction, type, subType] = MessageCounterData::kindOf(i);
        EXPECT_EQ(MessageCounterData::indexOf(direction, type, subType), i);
        ++times;
        if (pass == 1) {
          EXPECT_EQ(bench.counters->value(intf, direction, type, subType), times);
        }
        for (uint64_t n = 0; pass == 0 && n < times; ++n) {
          bench.counters->inc(intf, direction, type, subType);
        }
      }
    }
  }
  EXPECT_EQ(bench.counters->messageCounterData(Lumo::IntfId()), bench.counters->emptyRecord());
}

TEST_F(Counters, AnInterfaceWithoutARecordCountsForTheEmptyInterfaceId) {
  bench.count(bench.one);
  EXPECT_EQ(bench.counted(Lumo::IntfId()), 1u);
  EXPECT_EQ(bench.counted(bench.one), 0u);
  EXPECT_EQ(bench.counters->messageCounterData(bench.one), bench.counters->emptyRecord());
}

TEST_F(Counters, ANameOf112OctetsHasARecordAndALongerOneCountsForTheEmptyInterfaceId) {
  Lumo::IntfId const longest{Vesk::String8(std::string(112, 'x'))};
  Lumo::IntfId const tooLong{Vesk::String8(std::string(113, 'x'))};
  for (Lumo::IntfId intf : {longest, tooLong}) {
    bench.counters->intfIs(intf);
    bench.count(intf);
  }
  EXPECT_EQ(bench.counted(longest), 1u);
  EXPECT_EQ(bench.counted(tooLong), 0u);
  EXPECT_EQ(bench.counted(Lumo::IntfId()), 1u);
  EXPECT_EQ(world.traced("has too long a name"), 1u);
  EXPECT_THAT(bench.reader().interfaces(), ElementsAre(std::string(112, 'x')));
}

TEST_F(Counters, AFullTableCountsForTheEmptyInterfaceId) {
  CounterBench small({.capacity = 2});
  small.fill();
  EXPECT_EQ(small.counted(small.one), 8u);
  EXPECT_EQ(small.counted(small.two), 0u);
  EXPECT_EQ(small.counted(Lumo::IntfId()), 8u);
  EXPECT_EQ(world.traced("no record is left for Ethernet2"), 1u);
}

TEST_F(Counters, CountingOnAKnownInterfaceAllocatesNothing) {
  bench.fill();
  uint64_t const before = allocations();
  for (int i = 0; i < 100; ++i) bench.count(bench.two);
  bench.counters->intfIs(bench.two);
  EXPECT_EQ(allocations(), before);
}

TEST_F(Counters, ExpectingACountChangesNothingWhoeverItIsOf) {
  bench.fill();
  uint64_t const before = bench.counted(bench.two);
  bench.counters->expect(bench.two);
  bench.counters->expect(Lumo::IntfId("nobody's"));
  EXPECT_EQ(bench.counted(bench.two), before);
}

TEST_F(Counters, MemoryOfTheProcessBeginsWithALineOfMemory) {
  auto const begin = reinterpret_cast<uintptr_t>(bench.memory->words().data());
  EXPECT_EQ(begin % 64, 0u);
}

TEST_F(Counters, MemoryGrowsWithTheInterfacesByLittleMoreThanTheirRecords) {
  for (int i = 0; i < 1000; ++i) {
    bench.counters->intfIs(Lumo::IntfId(Vesk::String8("port" + std::to_string(i))));
  }
  EXPECT_EQ(bench.memory->words().size(), CounterLayout::wordsOf(1001));
  for (int i = 0; i < 1000; ++i) {
    Lumo::IntfId const intf(Vesk::String8("port" + std::to_string(i)));
    bench.count(intf);
    ASSERT_EQ(bench.counted(intf), 1u);
  }
}

TEST_F(Counters, ASnapshotDividesWhatWasBeforeFromWhatIsSince) {
  bench.fill();
  EXPECT_EQ(bench.counted(bench.one), 8u);
  EXPECT_EQ(bench.countedSinceSnapshot(bench.one), 3u);
  bench.counters->msgCounterSnapshotIs(bench.counters->messageCounterData(bench.one));
  EXPECT_EQ(bench.counted(bench.one), 8u) << "clearing resets no counter";
  EXPECT_EQ(bench.countedSinceSnapshot(bench.one), 0u);
  EXPECT_EQ(bench.countedSinceSnapshot(bench.two), 3u);
  bench.count(bench.one);
  EXPECT_EQ(bench.countedSinceSnapshot(bench.one), 1u);
}

TEST_F(Counters, TheSnapshotOfTheEmptyRecordOrAStrangerStoresNothing) {
  bench.fill();
  std::vector<uint8_t> const before(bench.octets().begin(), bench.octets().end());
  bench.counters->msgCounterSnapshotIs(bench.counters->emptyRecord());
  MessageCounterData::Counters counters{};
  counters[0] = 1;
  bench.counters->msgCounterSnapshotIs(MessageCounterData(Lumo::IntfId("nowhere"), counters));
  EXPECT_THAT(bench.octets(), ::testing::ElementsAreArray(before));
}

TEST_F(Counters, ANewProcessGoesOnCounting) {
  for (unsigned counted : {8u, 9u, 10u, 11u}) {
    if (counted == 8) bench.fill();
    bench.restart();
    EXPECT_EQ(bench.counted(bench.one), counted) << "before anybody names the interface";
    bench.counters->intfIs(bench.one);
    bench.count(bench.one);
    EXPECT_EQ(bench.counted(bench.one), counted + 1);
    EXPECT_EQ(bench.countedSinceSnapshot(bench.one), counted + 1 - 5);
  }
  EXPECT_EQ(bench.counted(bench.two), 8u);
  EXPECT_EQ(bench.memory->corruptionFiles(), 0u);
  EXPECT_EQ(bench.memory->words().size(), CounterLayout::wordsOf(3));
}

TEST_F(Counters, AnyMemoryThatIsNoTableOfThisFormIsKeptForDiagnosisAndMadeAnew) {
  for (size_t at = 0; at < CounterLayout::kHeaderWords; ++at) {
    CounterBench other;
    other.fill();
    other.counters = nullptr;
    other.memory->words()[at] += 1;
    std::vector<uint8_t> const found(other.octets().begin(), other.octets().end());
    other.restart();
    EXPECT_EQ(other.counted(other.one), 0u) << at;
    EXPECT_EQ(other.memory->corruptionFiles(), 1u);
    EXPECT_EQ(other.memory->corruptionFile().octets, found);
    EXPECT_EQ(other.memory->corruptionFile().text.substr(0, 13), "table header:");
    other.fill();
    EXPECT_EQ(other.counted(other.one), 8u);
  }
}

TEST_F(Counters, ATableOfAnotherCapacityIsMadeAnew) {
  bench.fill();
  auto const other =
      Vesk::make<MessageCounters>("mka", bench.memory, MessageCountersOptions{.capacity = 77});
  EXPECT_EQ(other->messageCounterData(bench.one), other->emptyRecord());
  EXPECT_EQ(world.traced("mka is made anew: table header: the capacity is another"), 1u);
}

TEST_F(Counters, AProcessThatOnlyClearsSeesRecordsThatComeLater) {
  bench.memory->attach(CounterLayout::wordsOf(10), CounterLayout::wordsOf(10));
  bench.restart();
  auto const later =
      Vesk::make<MessageCounters>("mka", bench.memory, MessageCountersOptions{.counts = false});
  EXPECT_EQ(later->messageCounterData(bench.one), later->emptyRecord());
  bench.fill();
  EXPECT_EQ(later->value(bench.one, Direction::tx, Type::success, SubType::none), 8u);
  later->msgCounterSnapshotIs(later->messageCounterData(bench.one));
  EXPECT_EQ(bench.countedSinceSnapshot(bench.one), 0u);
  EXPECT_EQ(bench.countedSinceSnapshot(bench.two), 3u);
}

TEST_F(Counters, AProcessThatOnlyClearsMakesNoTable) {
  auto const memory = std::make_shared<ProcessCounterMemory>();
  auto const clerk =
      Vesk::make<MessageCounters>("mka", memory, MessageCountersOptions{.counts = false});
  EXPECT_EQ(clerk->messageCounterData(bench.one), clerk->emptyRecord());
  EXPECT_TRUE(CounterTable(memory->words()).isBlank());
}

TEST_F(Counters, AReaderSeesNamesTotalsAndWhatIsSinceTheSnapshot) {
  bench.fill();
  auto const reader = bench.reader();
  EXPECT_THAT(reader.interfaces(), ElementsAre("Ethernet1", "Ethernet2"));
  auto const read = reader.interface("Ethernet2");
  ASSERT_TRUE(read);
  size_t const sent = MessageCounterData::indexOf(Direction::tx, Type::success, SubType::none);
  size_t const icv =
      MessageCounterData::indexOf(Direction::rx, Type::failure, SubType::icvValidationErr);
  EXPECT_EQ(read->total[sent], 8u);
  EXPECT_EQ(read->sinceSnapshot[sent], 3u);
  EXPECT_EQ(read->total[icv], 1u);
  EXPECT_EQ(read->sinceSnapshot[icv], 0u);
  EXPECT_FALSE(reader.interface("Ethernet3"));
}

TEST_F(Counters, OfAnInterfaceAreReadWithoutALookAtOtherRecords) {
  bench.fill();
  auto const read = bench.counters->counters(bench.two);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->total, bench.reader().interface("Ethernet2")->total);
  EXPECT_EQ(read->sinceSnapshot, bench.reader().interface("Ethernet2")->sinceSnapshot);
  bench.record(1)[0] ^= 255;
  EXPECT_NE(corruptionOf([&] { bench.reader().interface("Ethernet3"); }), "");
  EXPECT_FALSE(bench.counters->counters(Lumo::IntfId("Ethernet3")));
  EXPECT_EQ(bench.counters->counters(bench.two)->total, read->total);
}

}  // namespace
}  // namespace Macsec::Brine
