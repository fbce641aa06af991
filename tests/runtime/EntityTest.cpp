#include "runtime/Entity.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/runtime/TestEntity.h"
#include "tests/support/RecordingWorld.h"

namespace Vesk::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

Lumo::IntfId const one("1");
Lumo::IntfId const two("2");

class EntityTest : public testing::Test {
 protected:
  Owner owner;
  Ptr<Port> port = make<Port>();
  Ptr<PortReactor> reactor = make<PortReactor>(owner, port, "r");
};

TEST_F(EntityTest, WriteStoresFirstAndTellsAfterwards) {
  owner.then = [&](auto&) { EXPECT_EQ(port->speed(), 5u); };
  port->speedIs(5);
  EXPECT_THAT(owner.heard, ElementsAre("r speed"));
}

TEST_F(EntityTest, WriteOfAnEqualValueRunsNoHandler) {
  port->speedIs(0);
  port->labelIs("");
  port->labelIs("x");
  port->labelIs(String8("x"));
  EXPECT_THAT(owner.heard, ElementsAre("r label"));
}

TEST_F(EntityTest, CounterReturnsTheNewValueAndByNothingTellsNothing) {
  EXPECT_EQ(port->speedInc(3), 3u);
  EXPECT_EQ(port->speedInc(0), 3u);
  EXPECT_THAT(owner.heard, ElementsAre("r speed"));
}

TEST_F(EntityTest, MemberIsMadeOnceThenReturnedWithoutNotification) {
  Ptr<Lane> lane = port->laneIs(one);
  EXPECT_THAT(owner.heard, ElementsAre("r lane 1"));
  EXPECT_EQ(lane->parent(), port.ptr());
  EXPECT_TRUE(port->laneIs(one) == lane);
  EXPECT_TRUE(port->lane(one) == lane);
  EXPECT_THAT(owner.heard, ElementsAre("r lane 1"));
}

TEST_F(EntityTest, MemberIsInTheCollectionWhenItIsTold) {
  owner.then = [&](auto&) { EXPECT_TRUE(port->lane(one)); };
  port->laneIs(one);
}

TEST_F(EntityTest, MemberAskedForWithAnotherConstructorParameterIsRefused) {
  port->laneIs(one, 4);
  try {
    port->laneIs(one, 8);
    FAIL() << "nothing thrown";
  } catch (NameInUseException const& e) {
    EXPECT_STREQ(e.what(),
                 "Reinstantiating the entity with name 1 where constructor parameter attribute "
                 "_width has a different value of 8 than the current value of 4 not allowed");
  }
}

TEST_F(EntityTest, FactoryThatGivesNullIsRefused) {
  try {
    port->nullLaneIs(one);
    FAIL() << "nothing thrown";
  } catch (RangeException const& e) {
    EXPECT_STREQ(e.what(), "null ValidPtr");
  }
  EXPECT_THAT(owner.heard, IsEmpty());
}

TEST_F(EntityTest, DeletionReturnsTheMemberWithoutParentAndTells) {
  Ptr<Lane> lane = port->laneIs(one);
  owner.heard.clear();
  owner.then = [&](auto&) {
    EXPECT_FALSE(port->lane(one));
    EXPECT_EQ(lane->parent(), nullptr);
  };
  EXPECT_TRUE(port->laneDel(one) == lane);
  EXPECT_THAT(owner.heard, ElementsAre("r lane 1"));
}

TEST_F(EntityTest, DeletionOfAnAbsentKeyReturnsNullAndTellsNothing) {
  EXPECT_TRUE(port->laneDel(one) == nullptr);
  port->noteDel("x");
  EXPECT_THAT(owner.heard, IsEmpty());
}

TEST_F(EntityTest, DeletionOfAllTellsEachMember) {
  port->laneIs(one);
  port->laneIs(two);
  owner.heard.clear();
  port->laneDelAll();
  EXPECT_THAT(owner.heard, UnorderedElementsAre("r lane 1", "r lane 2"));
  EXPECT_TRUE(port->lane().empty());
}

TEST_F(EntityTest, MemberThatOutlivesItsParentHasNone) {
  Ptr<Lane> lane = port->laneIs(one);
  EXPECT_EQ(lane->fullName(), "port/1");
  reactor = nullptr;
  port = nullptr;
  EXPECT_EQ(lane->parent(), nullptr);
  EXPECT_EQ(lane->fullName(), "1");
}

TEST_F(EntityTest, ValuesUnderKeysTellEachEffectiveChange) {
  port->noteIs("a", 1);
  port->noteIs("a", 1);
  port->noteIs("a", 2);
  EXPECT_EQ(*port->note("a"), 2u);
  EXPECT_EQ(port->note("b"), nullptr);
  port->noteDel("a");
  EXPECT_THAT(owner.heard, ElementsAre("r note a", "r note a", "r note a"));
  port->noteIs("b", 1);
  port->noteDelAll();
  EXPECT_TRUE(port->note().empty());
}

TEST_F(EntityTest, IdIsNoOtherEntitys) {
  auto second = make<Port>();
  EXPECT_NE(port->entityId(), second->entityId());
  EXPECT_EQ(port->name(), "port");
}

class AttributeLogTest : public EntityTest {
 protected:
  AttributeLogTest() { recording.attributeLogIs(true); }
  RecordingWorld recording;
};

TEST_F(AttributeLogTest, HoldsEachEffectiveWriteInOrder) {
  port->speedIs(7);
  port->speedIs(7);
  port->labelIs("it's");
  port->noteIs("n", 3);
  port->noteDel("n");
  Ptr<Lane> lane = port->laneIs(one);
  lane->loadIs(2);
  port->laneDel(one);
  EXPECT_THAT(
      recording.written,
      ElementsAre("port.speed=7", "port.label='it\\'s'", "port.note['n']=3",
                  "port.note['n']=", "port.lane['1']=+", "port/1.load=2", "port.lane['1']="));
}

TEST_F(AttributeLogTest, HoldsAWriteBeforeTheHandlersOfIt) {
  owner.then = [&](auto& what) {
    if (what == "r speed") port->labelIs("x");
  };
  port->speedIs(1);
  EXPECT_THAT(recording.written, ElementsAre("port.speed=1", "port.label='x'"));
}

TEST_F(AttributeLogTest, OffHoldsNothing) {
  recording.attributeLogIs(false);
  port->speedIs(7);
  port->laneIs(one);
  EXPECT_THAT(recording.written, IsEmpty());
}

TEST_F(AttributeLogTest, IsPushedOutOnRequest) {
  flushEntityLogOutputBuffer();
  EXPECT_EQ(recording.flushes, 1);
}

}  // namespace
}  // namespace Vesk::Test
