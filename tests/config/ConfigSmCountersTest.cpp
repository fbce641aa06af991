#include "platform/Corruption.h"
#include "tests/config/ConfigFixture.h"

namespace Macsec {
namespace {

using ::testing::HasSubstr;

/// Two interfaces with a status and one without, of which each has sent a frame.
class ClearedCounters : public Configuration {
 protected:
  void beginWith(Brine::MessageCountersOptions options) {
    counters = Vesk::make<Brine::MessageCounters>("mka", memory, options);
    for (Lumo::IntfId intf : {kIntf, kOther, kUnbound}) counters->intfIs(intf);
    count();
    bind();
    bind("two", kOther, Support::key("6364"));
    sm = configSmFactory(config, status, eapKeys, ethDir, counters);
    ASSERT_TRUE(status->intfStatus(kOther));
    ASSERT_FALSE(status->intfStatus(kUnbound));
  }
  void count() {
    for (Lumo::IntfId intf : {kIntf, kOther, kUnbound}) {
      counters->inc(intf, MessageCounterDirection::tx, MessageCounterType::success,
                    MessageCounterFailureSubType::none);
    }
  }
  uint64_t total(Lumo::IntfId intf) {
    return counters->value(intf, MessageCounterDirection::tx, MessageCounterType::success,
                           MessageCounterFailureSubType::none);
  }
  uint64_t sinceSnapshot(Lumo::IntfId intf) {
    return counters->valueSinceSnapshot(intf, MessageCounterDirection::tx,
                                        MessageCounterType::success,
                                        MessageCounterFailureSubType::none);
  }
  /// Records stand in the order in which their interfaces came, behind that of the empty one.
  void damage(size_t record) {
    memory->words()[Brine::CounterLayout::recordAt(record) + 60] ^= 0x100;
  }
  std::vector<uint64_t> image() { return {memory->words().begin(), memory->words().end()}; }

  Lumo::IntfId const kUnbound{"Ethernet3"};
  std::shared_ptr<Brine::ProcessCounterMemory> memory =
      std::make_shared<Brine::ProcessCounterMemory>();
  Vesk::Ptr<Brine::MessageCounters> counters;
};

TEST_F(ClearedCounters, AnyIncrementClearsOnceAllInterfacesThatHaveAStatusAndNoOther) {
  beginWith({});
  for (uint32_t amount : {1u, 2u, 1000u, 0xffffffffu}) {
    count();
    world.traces.clear();
    config->clearMkaCountersInc(amount);
    EXPECT_EQ(sinceSnapshot(kIntf), 0u) << amount;
    EXPECT_EQ(sinceSnapshot(kOther), 0u) << amount;
    EXPECT_EQ(sinceSnapshot(kUnbound), total(kUnbound)) << amount;
    EXPECT_EQ(world.traced("Clearing counters for: Ethernet1"), 1u);
    EXPECT_EQ(world.traced("Clearing counters for: Ethernet2"), 1u);
    EXPECT_EQ(world.traced("Clearing counters for: "), 2u);
  }
  EXPECT_EQ(total(kIntf), 5u) << "clearing resets no counter";
}

TEST_F(ClearedCounters, AnIncrementByNothingClearsNothing) {
  beginWith({});
  config->clearMkaCountersInc(0);
  EXPECT_EQ(sinceSnapshot(kIntf), 1u);
}

TEST_F(ClearedCounters, NothingIsClearedAtTheStart) {
  config->clearMkaCountersInc(7);
  beginWith({});
  EXPECT_EQ(sinceSnapshot(kIntf), 1u);
}

TEST_F(ClearedCounters, WithoutATableClearingDoesNothing) {
  bind();
  begin();
  config->clearMkaCountersInc(1);
  EXPECT_EQ(world.traced("Clearing counters for: Ethernet1"), 1u);
}

TEST_F(ClearedCounters, CorruptionCostsOneClearingAndTheDamagedRecordOfATableThatRecovers) {
  beginWith({.recovers = true});
  damage(1);
  config->clearMkaCountersInc(1);
  EXPECT_EQ(memory->corruptionFiles(), 1u);
  EXPECT_EQ(memory->corruptionFile().text,
            "BrineMap::corruptionDetected() mka record 1 'Ethernet1': counters, slot 1: the "
            "words don't fit their checksum");
  EXPECT_EQ(sinceSnapshot(kOther), 0u) << "the others are cleared";
  EXPECT_EQ(total(kOther), 1u);
  EXPECT_EQ(total(kIntf), 0u) << "the record has started anew";
  count();
  EXPECT_EQ(sinceSnapshot(kIntf), 1u);
  config->clearMkaCountersInc(1);
  EXPECT_EQ(sinceSnapshot(kIntf), 0u);
  EXPECT_EQ(total(kIntf), 1u);
}

TEST_F(ClearedCounters, TheEmptyRecordThatStandsForADamagedOneStoresNothing) {
  beginWith({.recovers = true});
  status->intfStatusDel(kOther);
  damage(1);
  auto const found = image();
  config->clearMkaCountersInc(1);
  EXPECT_EQ(image(), found) << "the record is repaired by its next use, not by clearing";
  EXPECT_FALSE(memory->isAttached());
}

TEST_F(ClearedCounters, CorruptionLeavesTheHandlerOfATableThatDoesNotRecoverAndStoresNothing) {
  beginWith({.recovers = false});
  status->intfStatusDel(kOther);
  damage(1);
  auto const found = image();
  try {
    config->clearMkaCountersInc(1);
    FAIL() << "nothing was raised";
  } catch (Pollux::CorruptionDetectedException const& corruption) {
    EXPECT_THAT(corruption.what(),
                HasSubstr("BrineMap::corruptionDetected() mka record 1 'Ethernet1': "));
  }
  EXPECT_EQ(image(), found);
  EXPECT_EQ(memory->corruptionFiles(), 0u);
}

}  // namespace
}  // namespace Macsec
