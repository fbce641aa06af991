#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <system_error>

#include "platform/Corruption.h"
#include "tests/platform/CounterBench.h"
#include "tests/support/TestWorld.h"

namespace Macsec::Brine {
namespace {

// An octet of the counters.
constexpr size_t kInSlot0 = CounterLayout::kCounterAreaAt * sizeof(uint64_t) + 20;

using ::testing::HasSubstr;
using ::testing::StartsWith;

using SubType = CounterBench::SubType;

class CounterCorruption : public ::testing::Test {
 protected:
  CounterCorruption() {
    Vesk::TraceHandle::streamLevelsIs("Macsec", Vesk::kAllTraceLevels);
    bench.fill();
  }
  ~CounterCorruption() override { Vesk::TraceHandle::streamLevelsIs("", 0); }

  std::string readCorruption(CounterBench& of) {
    return corruptionOf([&] { of.counters->messageCounterData(of.one); });
  }
  /// Reads, and hands a corruption to the handler, as one who clears does.
  void readAndReport() {
    std::string const found = readCorruption(bench);
    if (!found.empty()) bench.counters->corruptionDetected(found);
  }

  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  CounterBench bench;
};

TEST_F(CounterCorruption, AnyOctetOfARecordInUseThatChangesIsFoundByTheNextRead) {
  size_t checks = 0;
  withEachOctetFlipped(bench.record(1), [&](size_t at) {
    ASSERT_THAT(readCorruption(bench), StartsWith("record 1 ")) << at;
    ASSERT_THAT(corruptionOf([&] { bench.reader().record(1); }), StartsWith("record 1 ")) << at;
    ++checks;
  });
  EXPECT_EQ(checks, CounterLayout::kRecordWords * sizeof(uint64_t) * 9);
  EXPECT_EQ(readCorruption(bench), "");
  EXPECT_EQ(bench.counted(bench.one), 8u);
}

TEST_F(CounterCorruption, AnyOctetOfTheHeaderThatChangesIsFoundByTheNextRead) {
  withEachOctetFlipped(bench.header(), [&](size_t at) {
    ASSERT_THAT(readCorruption(bench), StartsWith("table header: ")) << at;
    ASSERT_THAT(corruptionOf([&] { bench.reader().interfaces(); }), StartsWith("table header: "));
  });
  EXPECT_EQ(readCorruption(bench), "");
}

TEST_F(CounterCorruption, TheSnapshotAloneIsCheckedToo) {
  auto area = bench.record(1).subspan(CounterLayout::kSnapshotAreaAt * sizeof(uint64_t));
  withEachOctetFlipped(area, [&](size_t at) {
    ASSERT_THAT(corruptionOf([&] { bench.counters->snapshot(bench.one); }),
                HasSubstr(": snapshot, slot "))
        << at;
  });
  area[20] ^= 1;
  MessageCounterData::Counters counters{};
  counters[3] = 1;
  EXPECT_THROW(bench.counters->msgCounterSnapshotIs(MessageCounterData(bench.one, counters)),
               Pollux::CorruptionDetectedException)
      << "writing over the damage would hide it";
}

TEST_F(CounterCorruption, CountingOnADamagedRecordNeverHealsIt) {
  auto const record = bench.record(1);
  std::vector<uint8_t> const sound(record.begin(), record.end());
  for (size_t at = 0; at < sound.size(); ++at) {
    for (int frames : {1, 2, 3}) {
      CounterBench damaged;
      damaged.fill();
      damaged.record(1)[at] ^= 0x10;
      for (int i = 0; i < frames; ++i) damaged.fail(damaged.one, SubType::icvValidationErr);
      ASSERT_NE(readCorruption(damaged), "") << at << " after " << frames;
    }
  }
}

TEST_F(CounterCorruption, TheTextNamesTheRecordTheInterfaceAndWhatIsWrong) {
  auto const damagedAt = [&](size_t at) {
    bench.word(1, at) ^= 0x400;
    std::string const text = readCorruption(bench);
    bench.word(1, at) ^= 0x400;
    return text;
  };
  using namespace CounterLayout;
  EXPECT_EQ(damagedAt(kCounterAreaAt + kFirstCounterAt),
            "record 1 'Ethernet1': counters, slot 0: the words don't fit their checksum");
  EXPECT_EQ(damagedAt(kSnapshotAreaAt + kSlotWords + kChecksumAt),
            "record 1 'Ethernet1': snapshot, slot 1: the words don't fit their checksum");
  EXPECT_EQ(damagedAt(kStateAt), "record 1 'Ethernet1': the state is neither in use nor unused");
  EXPECT_EQ(damagedAt(kNameAt),
            "record 1 of an unreadable name: the name doesn't fit its checksum");
  bench.word(1, kCounterAreaAt) = kSequenceEnd;
  EXPECT_EQ(readCorruption(bench),
            "record 1 'Ethernet1': counters, slot 0: no writer gives such a sequence number");
  bench.word(1, kCounterAreaAt) = kBeingWritten;
  bench.word(1, kCounterAreaAt + kSlotWords) = kBeingWritten;
  EXPECT_EQ(readCorruption(bench), "record 1 'Ethernet1': counters: both slots are being written");
}

TEST_F(CounterCorruption, ATableThatDoesNotRecoverRaisesAgainAndKeepsEverything) {
  CounterBench strict({.recovers = false});
  strict.fill();
  strict.record(1)[kInSlot0] ^= 1;
  std::vector<uint8_t> const found(strict.octets().begin(), strict.octets().end());
  EXPECT_EQ(corruptionOf([&] { strict.counters->corruptionDetected("it is so"); }),
            "BrineMap::corruptionDetected() mka it is so");
  EXPECT_TRUE(strict.memory->isAttached());
  EXPECT_EQ(strict.memory->corruptionFiles(), 0u);
  EXPECT_THAT(strict.octets(), ::testing::ElementsAreArray(found));
  strict.restart();
  EXPECT_NE(readCorruption(strict), "") << "a new process doesn't hide it either";
  strict.count(strict.one);
  strict.counters->intfIs(strict.one);
  EXPECT_NE(readCorruption(strict), "");
  EXPECT_EQ(strict.counted(strict.two), 8u);
}

TEST_F(CounterCorruption, ATableThatRecoversLetsGoOfTheMemoryAndWritesTheFile) {
  bench.record(1)[kInSlot0] ^= 1;
  std::vector<uint8_t> const found(bench.octets().begin(), bench.octets().end());
  bench.counters->corruptionDetected("it is so");
  EXPECT_FALSE(bench.memory->isAttached());
  EXPECT_EQ(bench.memory->corruptionFile().text, "BrineMap::corruptionDetected() mka it is so");
  EXPECT_EQ(bench.memory->corruptionFile().octets, found);
  EXPECT_THAT(bench.octets(), ::testing::ElementsAreArray(found)) << "nothing is repaired yet";
  bench.count(bench.two);
  EXPECT_TRUE(bench.memory->isAttached());
  EXPECT_EQ(bench.memory->corruptionFiles(), 1u);
}

TEST_F(CounterCorruption, OnlyTheDamagedRecordStartsAnew) {
  for (size_t at = 0; at < bench.record(1).size(); at += 7) {
    CounterBench damaged;
    damaged.fill();
    damaged.record(1)[at] ^= 0x80;
    std::string const found = readCorruption(damaged);
    ASSERT_NE(found, "") << at;
    damaged.counters->corruptionDetected(found);
    EXPECT_EQ(damaged.counted(damaged.one), 0u);
    EXPECT_EQ(damaged.countedSinceSnapshot(damaged.one), 0u);
    EXPECT_EQ(damaged.counted(damaged.two), 8u);
    EXPECT_EQ(damaged.countedSinceSnapshot(damaged.two), 3u);
    damaged.count(damaged.one);
    EXPECT_EQ(damaged.counted(damaged.one), 1u);
    EXPECT_EQ(damaged.memory->corruptionFiles(), 1u);
    EXPECT_EQ(damaged.reader().interfaces().size(), 2u);
  }
}

TEST_F(CounterCorruption, AHeaderDamagedUnderARunningProcessCostsNoCount) {
  for (size_t at = 0; at < bench.header().size(); ++at) {
    bench.header()[at] ^= 4;
    readAndReport();
    EXPECT_EQ(bench.counted(bench.one), 8u) << at;
    EXPECT_EQ(bench.countedSinceSnapshot(bench.two), 3u);
  }
  EXPECT_EQ(bench.memory->corruptionFiles(), bench.header().size());
  std::ranges::fill(bench.header(), uint8_t{0});
  readAndReport();
  EXPECT_EQ(bench.counted(bench.one), 8u) << "nothing is left of the header";
}

TEST_F(CounterCorruption, ANewProcessKeepsAFileOfWhatItFindsDamagedAndStartsThatAnew) {
  bench.record(1)[kInSlot0] ^= 1;
  std::vector<uint8_t> const found(bench.octets().begin(), bench.octets().end());
  bench.restart();
  EXPECT_EQ(bench.memory->corruptionFiles(), 1u);
  EXPECT_EQ(bench.memory->corruptionFile().octets, found);
  EXPECT_EQ(world.traced("record 1 'Ethernet1': counters, slot 0"), 1u);
  EXPECT_EQ(bench.counted(bench.one), 0u);
  EXPECT_EQ(bench.counted(bench.two), 8u);
}

TEST_F(CounterCorruption, ARecordOfAnUnreadableNameIsGivenToTheNextInterface) {
  bench.word(1, CounterLayout::kNameAt) ^= 1;
  bench.restart();
  EXPECT_EQ(bench.counters->messageCounterData(bench.one), bench.counters->emptyRecord());
  bench.counters->intfIs(bench.one);
  bench.count(bench.one);
  EXPECT_EQ(bench.counted(bench.one), 1u);
  EXPECT_EQ(bench.counted(bench.two), 8u);
  EXPECT_EQ(bench.memory->words().size(), CounterLayout::wordsOf(3));
}

TEST_F(CounterCorruption, TheFirstRecordIsThatOfTheEmptyInterfaceIdAgain) {
  bench.word(0, CounterLayout::kNameAt) ^= 1;
  bench.restart();
  bench.count(Lumo::IntfId("nowhere"));
  EXPECT_EQ(bench.counted(Lumo::IntfId()), 1u);
  EXPECT_EQ(bench.counted(bench.one), 8u);
}

TEST_F(CounterCorruption, AReaderShowsWhatIsSoundBesideADamagedRecord) {
  bench.record(1)[kInSlot0] ^= 1;
  EXPECT_EQ(bench.reader().interface("Ethernet2")->name, "Ethernet2");
  EXPECT_THROW(bench.reader().interface("Ethernet1"), Pollux::CorruptionDetectedException);
  bench.word(1, CounterLayout::kNameAt) ^= 1;
  EXPECT_EQ(bench.reader().interface("Ethernet2")->name, "Ethernet2");
  EXPECT_THROW(bench.reader().interface("Ethernet1"), Pollux::CorruptionDetectedException)
      << "it may be the one of the unreadable name";
}

/// Memory that the system doesn't always give.
class ScarceMemory final : public CounterMemory {
 public:
  std::span<uint64_t> attach(size_t least, size_t most) override {
    if (isShort) throw std::system_error(std::make_error_code(std::errc::not_enough_memory));
    return memory.attach(least, most);
  }
  void detach() override { memory.detach(); }
  void corruptionFileIs(std::string_view text, std::span<uint8_t const> octets) override {
    memory.corruptionFileIs(text, octets);
  }
  ProcessCounterMemory memory;
  bool isShort = false;
};

TEST_F(CounterCorruption, MemoryThatCannotBeTakenUpAgainAtOnceIsTakenUpLater) {
  auto const memory = std::make_shared<ScarceMemory>();
  auto const counters = Vesk::make<MessageCounters>("mka", memory);
  counters->intfIs(bench.one);
  auto const count = [&] {
    counters->inc(bench.one, CounterBench::Direction::rx, CounterBench::Type::success,
                  SubType::none);
  };
  count();
  counters->corruptionDetected("it is so");
  memory->isShort = true;
  count();
  EXPECT_EQ(counters->messageCounterData(bench.one), counters->emptyRecord());
  counters->msgCounterSnapshotIs(MessageCounterData(bench.one, {1}));
  EXPECT_EQ(world.traced("no memory for mka, nothing is counted: "), 3u);
  memory->isShort = false;
  count();
  EXPECT_EQ(counters->value(bench.one, CounterBench::Direction::rx, CounterBench::Type::success,
                            SubType::none),
            2u);
  memory->isShort = true;
  EXPECT_THROW(Vesk::make<MessageCounters>("mka", memory), std::system_error)
      << "whoever makes a table hears at once";
}

TEST_F(CounterCorruption, MemoryTooShortForItsRecordsIsFound) {
  auto const words = bench.memory->words();
  MessageCounterReader const reader(words.first(words.size() - 1));
  EXPECT_THAT(corruptionOf([&] { reader.records(); }), HasSubstr("too short for the records"));
  EXPECT_THAT(corruptionOf([&] { MessageCounterReader(words.first(3)).records(); }),
              HasSubstr("too short for one"));
}

}  // namespace
}  // namespace Macsec::Brine
