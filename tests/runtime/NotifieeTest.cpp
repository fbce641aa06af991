#include "runtime/Notifiee.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/runtime/TestEntity.h"
#include "tests/support/RecordingWorld.h"

namespace Vesk::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Lumo::IntfId const kFirst("Ethernet1");
Lumo::IntfId const kSecond("Ethernet2");

class KeyedVisitTest : public testing::Test {
 protected:
  Ptr<SpeedReactor> reactor(char const* name, Lumo::IntfId key = Lumo::IntfId()) {
    return make<SpeedReactor>(owner, port, name, key);
  }

  RecordingWorld world;
  Owner owner;
  Ptr<Port> port = make<Port>();
  // Attached in the order of their letters.
  Ptr<SpeedReactor> a = reactor("a", kSecond), b = reactor("b"), c = reactor("c", kFirst),
                    d = reactor("d"), e = reactor("e", kSecond);
};

TEST_F(KeyedVisitTest, CallsThoseWithoutAKeyAndThoseOfTheKeyInOrderOfAttachment) {
  port->speedOfIs(kFirst, 1);
  EXPECT_THAT(owner.heard, ElementsAre("b speed", "c speed", "d speed"));
  owner.heard.clear();
  port->speedOfIs(kSecond, 2);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "b speed", "d speed", "e speed"));
  owner.heard.clear();
  port->speedOfIs(Lumo::IntfId("Ethernet3"), 3);
  EXPECT_THAT(owner.heard, ElementsAre("b speed", "d speed"));
}

TEST_F(KeyedVisitTest, WithTheEmptyKeyReachesAllInOrderOfAttachment) {
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "b speed", "c speed", "d speed", "e speed"));
}

TEST_F(KeyedVisitTest, WithTheEmptyKeySurvivesThatKeyedReactorsLeaveAndJoin) {
  Ptr<SpeedReactor> late;
  owner.then = [&](auto& what) {
    if (what == "b speed") c = nullptr, late = reactor("late", kFirst);
    if (what == "d speed") e->isRegisteredNotifieeIs(false);
  };
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "b speed", "d speed"));
  owner.heard.clear();
  owner.then = nullptr;
  port->speedIs(2);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "b speed", "d speed", "late speed"));
}

TEST_F(KeyedVisitTest, OfOneKeySurvivesThatItsReactorsLeaveAndJoin) {
  Ptr<SpeedReactor> late;
  owner.then = [&](auto& what) {
    if (what == "a speed") e = nullptr, late = reactor("late", kSecond);
  };
  port->speedOfIs(kSecond, 1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "b speed", "d speed"));
}

TEST_F(KeyedVisitTest, OfACollectionKeyedByInterfaceGoesByTheMembersKey) {
  auto lanes = make<PortReactor>(owner, port, "one", kFirst);
  port->laneIs(kFirst);
  port->laneIs(kSecond);
  EXPECT_THAT(owner.heard, ElementsAre("one lane Ethernet1"));
}

TEST_F(KeyedVisitTest, EndsWhenTheNotifierDiesDuringAVisitOfAll) {
  Port* raw = port.ptr();
  owner.then = [&](auto& what) {
    if (what != "b speed") return;
    port = nullptr;
    for (auto& r : {a, b, c, d, e}) r->notifierIs(nullptr);
  };
  raw->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "b speed"));
}

TEST_F(KeyedVisitTest, KeyIsKeptWhenTheReactorIsRepointed) {
  Ptr<Port> other = make<Port>("other");
  c->notifierIs(other);
  owner.heard.clear();
  other->speedOfIs(kSecond, 1);
  EXPECT_THAT(owner.heard, IsEmpty());
  other->speedOfIs(kFirst, 2);
  EXPECT_THAT(owner.heard, ElementsAre("c speed"));
}

TEST_F(KeyedVisitTest, SwitchedOffCallsEveryReactorThatEntersForEverything) {
  world.visitsAreFilteredIs(false);
  auto f = reactor("f", kSecond);
  port->speedOfIs(kFirst, 1);
  EXPECT_THAT(owner.heard, ElementsAre("b speed", "c speed", "d speed", "f speed"));
  auto deaf = make<DeafReactor>(owner, port);
  EXPECT_TRUE(deaf->isRegisteredNotifiee());
  world.visitsAreFilteredIs(true);
  f = nullptr;
  deaf = nullptr;
  EXPECT_EQ(port->notifiees(), 5u);
}

TEST(Notifiee, ReactorThatOverridesNothingIsInNoList) {
  Owner owner;
  auto port = make<Port>();
  auto deaf = make<DeafReactor>(owner, port);
  EXPECT_EQ(DeafReactor::watched(), 0u);
  EXPECT_FALSE(deaf->isRegisteredNotifiee());
  EXPECT_EQ(port->notifiees(), 0u);
}

TEST(Notifiee, WatchesTheAttributesWhoseHandlersItOverrides) {
  EXPECT_EQ(SpeedReactor::watched(), 1u << Port::kSpeed);
  EXPECT_EQ(PortReactor::watched(), 15u);
}

TEST(Notifiee, OfWhichNoneWatchesTheAttributeNoneIsCalled) {
  Owner owner;
  auto port = make<Port>();
  auto a = make<SpeedReactor>(owner, port, "a");
  auto b = make<SpeedReactor>(owner, port, "b", kFirst);
  port->labelIs("x");
  port->laneIs(kFirst);
  EXPECT_THAT(owner.heard, IsEmpty());
  EXPECT_EQ(port->notifiees(), 2u);
}

}  // namespace
}  // namespace Vesk::Test
