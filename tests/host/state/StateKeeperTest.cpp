#include "host/state/StateKeeper.h"

#include <gmock/gmock.h>

#include "tests/host/FilledTree.h"
#include "tests/host/HostFixture.h"
#include "tests/host/KeptState.h"

namespace Macsecd {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Key;
using testing::Not;

struct Kept : testing::Test {
  Kept() : scope(world) {}
  Support::TestWorld world;
  Vesk::WorldScope scope;
  KeptState store;
  Vesk::Ptr<Macsec::Status> status = Macsec::statusFactory("switch/status");
};

TEST_F(Kept, TurnIsOneTransactionOfWhatHasChanged) {
  StateKeeper keeper(status, store);
  EXPECT_FALSE(keeper.commit());
  status->mkpduPeriodIs(3);
  status->mkpduPeriodIs(4);
  status->macsecEnabledIs(true);
  EXPECT_THAT(store.values, IsEmpty());
  EXPECT_TRUE(keeper.commit());
  EXPECT_EQ(store.values, (StateValues{{"macsecEnabled", "True"}, {"mkpduPeriod", "4.0"}}));
  EXPECT_FALSE(keeper.commit());
  EXPECT_EQ(store.commits, 1u);
}

TEST_F(Kept, FlushOfTheAttributeLogCommitsAtOnce) {
  StateKeeper keeper(status, store);
  status->macsecEnabledIs(true);
  Vesk::flushEntityLogOutputBuffer();
  EXPECT_THAT(store.values, Contains(Key("macsecEnabled")));
}

TEST_F(Kept, TreesOfOthersAndFipsStatusAreNotFollowed) {
  auto const other = Macsec::statusFactory("switch/status");
  StateKeeper keeper(status, store);
  other->macsecEnabledIs(true);
  fillInterface(*other, kIntf, *std::make_unique<Changer>());
  status->fipsStatusIs(Macsec::FipsStatus(true, true));
  EXPECT_FALSE(keeper.commit());
}

TEST_F(Kept, EntityThatGoesTakesAllBelowItAlong) {
  StateKeeper keeper(status, store);
  fillTree(*status);
  keeper.commit();
  status->portStatus(kIntf)->actorStatusDel("ab");
  status->portStatus(kIntf)->actorStatus("\x01\xff")->livePeerDel("111111111111111111111111");
  status->cpStatus(kIntf)->rxSakDelAll();
  status->intfStatusDel(kIntf);
  keeper.commit();
  EXPECT_EQ(store.values, flattened(*status));
}

TEST_F(Kept, EntityThatGoesAndComesInOneTurnIsTheNewOne) {
  StateKeeper keeper(status, store);
  fillTree(*status);
  keeper.commit();
  auto const port = status->portStatus(kIntf);
  port->actorStatus("ab")->msgNumIs(99);
  port->actorStatusDel("ab");
  port->actorStatusIs("ab")->msgNumIs(5);
  keeper.commit();
  auto const rebuilt = rebuiltStatus(status->name(), store.values);
  EXPECT_EQ(Vesk::entityToText(*rebuilt.status), Vesk::entityToText(*status));
}

TEST_F(Kept, WhatTheStoreRefusesGoesWithTheNextTurn) {
  StateKeeper keeper(status, store);
  status->mkpduPeriodIs(3);
  store.refusal = "no room in /run";
  EXPECT_FALSE(keeper.commit());
  EXPECT_EQ(keeper.error(), "no room in /run; free some");
  store.refusal.clear();
  status->macsecEnabledIs(true);
  EXPECT_TRUE(keeper.commit());
  EXPECT_EQ(keeper.error(), "");
  EXPECT_EQ(store.values.size(), 2u);
}

TEST_F(Kept, AttributeLogIsOnAsLongAsSomebodyFollows) {
  EXPECT_FALSE(world.switches().writesAreLogged);
  {
    StateKeeper keeper(status, store);
    EXPECT_TRUE(world.switches().writesAreLogged);
  }
  EXPECT_FALSE(world.switches().writesAreLogged);
  EXPECT_THAT(world.attributeFollowers(), IsEmpty());
}

// Two whole switches talk; after every turn the store holds what the tree holds.
TEST(HostWithStore, HoldsItsTreeAfterEveryTurn) {
  KeptState store;
  Switch a(1, {.store = &store}), b(2);
  b.bringUp();
  Vesk::WorldScope scope(a.world);
  a.bringUp();
  for (double time = 0; time < 20; time += 0.25) {
    talk(a, b, time);
    a.host.commit();
    auto const rebuilt = rebuiltStatus(a.host.status()->name(), store.values);
    rebuilt.status->fipsStatusIs(a.host.status()->fipsStatus());
    ASSERT_EQ(Vesk::entityToText(*rebuilt.status), Vesk::entityToText(*a.host.status())) << time;
  }
  EXPECT_TRUE(a.host.status()->cpStatus(kIntf)->controlledPortEnabled());
}

TEST(HostWithStore, GoesOnFromItInAnotherProcessAndLeavesAnEmptyOneWhenItStops) {
  KeptState store;
  auto b = std::make_unique<Switch>(2);
  auto a = std::make_unique<Switch>(1, HostOptions{.store = &store});
  b->bringUp();
  a->bringUp();
  talk(*a, *b, 20);
  a->host.commit();
  auto const kept = store.values;
  ASSERT_EQ(kept.at("cpStatus/Ethernet1/controlledPortEnabled"), "True");
  std::string const text = Vesk::entityToText(*a->host.status());
  a->host.stop();
  EXPECT_THAT(store.values, Not(Contains(Key("cpStatus/Ethernet1"))));

  store.values = kept;
  Switch next(1, {.store = &store});
  auto const fips = a->host.status()->fipsStatus();
  Vesk::WorldScope const scope(next.world);
  next.host.status()->fipsStatusIs(fips);
  EXPECT_EQ(Vesk::entityToText(*next.host.status()), text);
  EXPECT_THAT(next.host.droppedState(), IsEmpty());
}

TEST(HostWithStore, ThatDiesHasWhatWasCommittedAndNothingElse) {
  KeptState store;
  Switch a(1, {.store = &store});
  Vesk::WorldScope const scope(a.world);
  a.bringUp();
  a.host.commit();
  a.host.status()->mkpduPeriodIs(77);
  a.host.die();
  EXPECT_EQ(a.host.status()->mkpduPeriod(), 2);
  EXPECT_TRUE(a.intfStatus());
}

TEST(HostWithStore, TellsWhatItDroppedAndTakesItOutOfTheStore) {
  KeptState store;
  store.values["mkaLifeTime"] = "for ever";
  Switch a(1, {.store = &store});
  ASSERT_EQ(a.host.droppedState().size(), 1u);
  EXPECT_EQ(a.host.droppedState()[0].path, "mkaLifeTime");
  a.host.commit();
  EXPECT_THAT(store.values, IsEmpty());
}

}  // namespace
}  // namespace Macsecd
