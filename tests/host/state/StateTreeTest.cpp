#include "host/state/StateTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/state/StateKeeper.h"
#include "tests/host/FilledTree.h"
#include "tests/host/KeptState.h"
#include "tests/support/TestWorld.h"
#include "tests/support/Thinned.h"

namespace Macsecd {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

struct StateTree : testing::Test {
  StateTree() : scope(world) {
    StateKeeper keeper(status, store);
    fillTree(*status);
    keeper.commit();
  }
  static std::string textOf(RebuiltState const& rebuilt) {
    return Vesk::entityToText(*rebuilt.status);
  }
  // What a rebuilt tree differs in, as paths, beside those at and below this one.
  std::string otherLosses(RebuiltState const& rebuilt, std::string const& path) const {
    std::string losses;
    auto const left = flattened(*rebuilt.status);
    for (auto const& [other, value] : store.values) {
      if (other == path || other.starts_with(path + "/")) continue;
      if (auto at = left.find(other); at == left.end() || at->second != value) losses += other;
    }
    return losses;
  }

  Support::TestWorld world;
  Vesk::WorldScope scope;
  KeptState store;
  Vesk::Ptr<Macsec::Status> status = Macsec::statusFactory("switch/status");
};

TEST_F(StateTree, IsRebuiltAsItWas) {
  auto const rebuilt = rebuiltStatus("switch/status", store.values);
  EXPECT_EQ(textOf(rebuilt), Vesk::entityToText(*status));
  EXPECT_THAT(rebuilt.dropped, IsEmpty());
  EXPECT_TRUE(rebuilt.repair.empty());
}

TEST_F(StateTree, HasEveryAttributeInTheStoreThatItsClassesDescribe) {
  EXPECT_EQ(store.values, flattened(*status));
  EXPECT_GT(store.values.size(), 200u);
}

TEST_F(StateTree, OfAnEmptyStoreIsNew) {
  auto const fresh = Macsec::statusFactory("switch/status");
  EXPECT_EQ(textOf(rebuiltStatus("switch/status", {})), Vesk::entityToText(*fresh));
}

TEST_F(StateTree, HasANewFipsStatusWhateverWasStored) {
  store.values["fipsStatus"] = Vesk::valueToStrep(Macsec::FipsStatus(true, true));
  auto const rebuilt = rebuiltStatus("switch/status", store.values);
  EXPECT_EQ(rebuilt.status->fipsStatus(), Macsec::FipsStatus());
  EXPECT_EQ(rebuilt.repair.values.at("fipsStatus"), std::nullopt);
}

TEST_F(StateTree, TellsAndTracesEachValueThatItDrops) {
  auto values = store.values;
  values["cpStatus/Ethernet1/rxSak/0"] = values["cpStatus/Ethernet1/rxSak/3"];
  values["intfStatus/Ethernet1/colour"] = "7";
  values["mkpduPeriod"] = "soon";
  Vesk::TraceHandle::streamLevelsIs("Macsecd::Host", Vesk::kAllTraceLevels);
  auto const rebuilt = rebuiltStatus("switch/status", values);
  Vesk::TraceHandle::streamLevelsIs("Macsecd::Host", 0);
  ASSERT_EQ(rebuilt.dropped.size(), 3u);
  EXPECT_EQ(rebuilt.dropped[0].path, "cpStatus/Ethernet1/rxSak/0");
  EXPECT_EQ(rebuilt.dropped[0].reason, "the value belongs to another key");
  EXPECT_EQ(rebuilt.dropped[1].reason, "the tree has no such place");
  EXPECT_EQ(rebuilt.dropped[2].path, "mkpduPeriod");
  EXPECT_EQ(world.traced("mkpduPeriod"), 1u);
}

// Every single value in turn, in four ways: the rest stands, and the repair makes the store say
// what the tree says.
TEST_F(StateTree, LosesNoMoreThanTheValueThatIsDamaged) {
  auto const ways = {+[](std::string& value) { value.resize(value.size() / 2); },
                     +[](std::string& value) { value.clear(); },
                     +[](std::string& value) { value[value.size() / 2] ^= 0x15; },
                     +[](std::string& value) { value += "\xff\0)"; }};
  size_t cases = 0;
  for (auto const& [path, value] : store.values) {
    for (auto const& damage : ways) {
      if (++cases % Support::kEach != 0) continue;
      StateValues values = store.values;
      damage(values[path]);
      auto const rebuilt = rebuiltStatus("switch/status", values);
      EXPECT_EQ(otherLosses(rebuilt, path), "") << path;
      apply(rebuilt.repair, values);
      auto const again = rebuiltStatus("switch/status", values);
      EXPECT_THAT(again.dropped, IsEmpty()) << path;
      EXPECT_EQ(textOf(again), textOf(rebuilt)) << path;
    }
  }
}

TEST_F(StateTree, LosesNoMoreThanTheValueThatIsMissing) {
  for (auto const& entry : store.values) {
    StateValues values = store.values;
    values.erase(entry.first);
    auto const rebuilt = rebuiltStatus("switch/status", values);
    EXPECT_EQ(otherLosses(rebuilt, entry.first), "") << entry.first;
  }
}

TEST_F(StateTree, TakesAPeerWithAnEmptyMemberIdentifier) {
  StateKeeper keeper(status, store);
  auto const actor = status->portStatusIs(Lumo::IntfId("Ethernet9"))->actorStatusIs("6162");
  actor->potentialPeerIs("")->timeStampIs(4);
  keeper.commit();
  auto const rebuilt = rebuiltStatus("switch/status", store.values);
  EXPECT_THAT(rebuilt.dropped, IsEmpty());
  auto const port = rebuilt.status->portStatus(Lumo::IntfId("Ethernet9"));
  ASSERT_TRUE(port);
  ASSERT_TRUE(port->actorStatus("6162")->potentialPeer(""));
  EXPECT_EQ(port->actorStatus("6162")->potentialPeer("")->timeStamp(), 4);
  actor->potentialPeerDel("");
  keeper.commit();
  EXPECT_THAT(rebuiltStatus("switch/status", store.values).dropped, IsEmpty());
}

TEST_F(StateTree, TakesNoPathThatItDoesNotKnow) {
  for (char const* path : {"", "/", "//", "x", "x/y", "intfStatus", "intfStatus//key", "%zz", "%1",
                           "portStatus/e/actorStatus", "portStatus/e/actorStatus//cak",
                           "portStatus/e/actorStatus/a/livePeer", "portStatus/e/actorStatus/a/b/c",
                           "portStatus/e/actorStatus/a/livePeer/b/c/d", "cpStatus/e/rxSak/9",
                           "cpStatus/e/rxSak/0/0", "intfStatus/e/key/x"}) {
    auto const rebuilt = rebuiltStatus("switch/status", {{path, "+"}});
    ASSERT_FALSE(rebuilt.dropped.empty()) << path;
    EXPECT_EQ(rebuilt.dropped.back().path, path);
  }
}

TEST_F(StateTree, KeepsKeysAsTheyLieInTheTree) {
  auto const& actor = *status->portStatus(Lumo::IntfId("Ethernet1"))->actorStatus("ab");
  EXPECT_EQ(store.values.at("portStatus/Ethernet1/actorStatus/ab/kek"),
            Vesk::valueToStrep(actor.kek()));
}

}  // namespace
}  // namespace Macsecd
