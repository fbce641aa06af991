#include "runtime/NestedReactors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/runtime/TestEntity.h"

namespace Vesk::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class NestedReactorsTest : public testing::Test {
 protected:
  using Nested = NestedReactors<LaneReactor, Lumo::IntfId>;
  void nestedIs(Ptr<Lane> lane) {
    nested.xIs(lane->intfId(), lane, [&] { return make<LaneReactor>(owner, lane); });
  }
  // The members that have a reactor.
  std::vector<std::string> followed() const {
    std::vector<std::string> keys;
    for (LaneReactor& reactor : nested.map())
      keys.push_back(reactor.fwkKey().stringValue().charPtr());
    return keys;
  }
  Owner owner;
  Ptr<Port> port = make<Port>("first");
  Ptr<Port> other = make<Port>("other");
  Lumo::IntfId const key{"1"};
  Lumo::IntfId const key2{"2"};
  Nested nested;
};

TEST_F(NestedReactorsTest, MakeTheReactorOfAMemberWithoutRunningItsHandlers) {
  Ptr<Lane> lane = port->laneIs(key);
  nestedIs(lane);
  EXPECT_EQ(nested.members(), 1u);
  EXPECT_THAT(owner.heard, IsEmpty());
  lane->loadIs(2);
  EXPECT_THAT(owner.heard, ElementsAre("load of 1 2"));
}

TEST_F(NestedReactorsTest, RepointTheReactorThatExistsWithCatchUp) {
  nestedIs(port->laneIs(key));
  LaneReactor* first = nested.find(key);
  Ptr<Lane> second = other->laneIs(key);
  second->loadIs(9);
  nestedIs(second);
  EXPECT_THAT(owner.heard, ElementsAre("load of 1 9"));
  EXPECT_EQ(nested.find(key), first);
  nestedIs(second);
  EXPECT_EQ(owner.heard.size(), 1u);
}

TEST_F(NestedReactorsTest, LetAReactorGoOutOfTheMapMarkedThenHandledWhileReadable) {
  Ptr<Lane> lane = port->laneIs(key);
  nestedIs(lane);
  Ptr<LaneReactor> going(nested.find(key));
  int handled = 0;
  nested.xDel(key, [&](LaneReactor& reactor) {
    ++handled;
    EXPECT_EQ(nested.find(key), nullptr);
    EXPECT_TRUE(reactor.isMarkedForDeletion());
    EXPECT_FALSE(reactor.isRegisteredNotifiee());
    EXPECT_TRUE(reactor.notifier() == lane);
    EXPECT_EQ(&reactor.owner(), &owner);
    lane->loadIs(1);
  });
  EXPECT_EQ(handled, 1);
  EXPECT_THAT(owner.heard, IsEmpty());
  EXPECT_EQ(going->references(), 1u);
  nested.xDel(key, [&](LaneReactor&) { ++handled; });
  EXPECT_EQ(handled, 1);
}

TEST_F(NestedReactorsTest, LetAllGoWithoutHandler) {
  nestedIs(port->laneIs(key));
  nestedIs(port->laneIs(key2));
  nested.hasNotificationActiveIs(true);
  for (auto& reactor : nested.map()) EXPECT_TRUE(reactor.hasNotificationActive());
  nested.retireAll();
  EXPECT_EQ(nested.members(), 0u);
  port->lane(key)->loadIs(1);
  EXPECT_THAT(owner.heard, IsEmpty());
}

TEST_F(NestedReactorsTest, FollowOneMemberAsItComesAndGoes) {
  port->laneIs(key);
  nested.follow(owner, port->lane(), key);
  nested.follow(owner, port->lane(), key2);
  EXPECT_THAT(followed(), ElementsAre("1"));
  port->lane(key)->loadIs(3);
  EXPECT_THAT(owner.heard, ElementsAre("load of 1 3"));
  port->laneDel(key);
  nested.follow(owner, port->lane(), key);
  EXPECT_THAT(followed(), IsEmpty());
}

TEST_F(NestedReactorsTest, TellOfAMemberThatHasGone) {
  std::vector<std::string> gone;
  auto const onGone = [&](LaneReactor& reactor) {
    gone.push_back(reactor.fwkKey().stringValue().charPtr());
  };
  port->laneIs(key);
  nested.follow(owner, port->lane(), key, onGone);
  EXPECT_THAT(gone, IsEmpty());
  port->laneDel(key);
  nested.follow(owner, port->lane(), key, onGone);
  nested.follow(owner, port->lane(), key, onGone);
  EXPECT_THAT(gone, ElementsAre("1"));
}

TEST_F(NestedReactorsTest, FollowAllMembersOfAnotherCollection) {
  port->laneIs(key);
  port->laneIs(key2);
  nested.followAll(owner, port->lane());
  EXPECT_THAT(followed(), UnorderedElementsAre("1", "2"));
  EXPECT_THAT(owner.heard, IsEmpty());
  LaneReactor const* const second = nested.find(key2);
  other->laneIs(key2)->loadIs(7);
  other->laneIs(Lumo::IntfId("3"));
  std::vector<std::string> gone;
  nested.followAll(owner, other->lane(), [&](LaneReactor& reactor) {
    gone.push_back(reactor.fwkKey().stringValue().charPtr());
  });
  EXPECT_THAT(followed(), UnorderedElementsAre("2", "3"));
  EXPECT_THAT(gone, ElementsAre("1"));
  EXPECT_EQ(nested.find(key2), second);
  EXPECT_THAT(owner.heard, ElementsAre("load of 2 7"));
}

// A reactor on a port with those on its lanes.
class LanesReactor final : public Reactor<Port, Owner, LanesReactor> {
 public:
  LanesReactor(Owner& owner, Ptr<Port> port) : Reactor(owner, std::move(port)) {
    lanes.followAll(owner, notifier()->lane());
  }
  auto nested() { return std::tie(lanes); }
  NestedReactors<LaneReactor, Lumo::IntfId> lanes;
};

TEST_F(NestedReactorsTest, GoOutOfServiceWithTheReactorThatNamesThem) {
  Ptr<Lane> lane = port->laneIs(key);
  auto reactor = make<LanesReactor>(owner, port);
  Ptr<LaneReactor> const laneReactor(reactor->lanes.find(key));
  reactor->retire();
  EXPECT_TRUE(laneReactor->isMarkedForDeletion());
  EXPECT_EQ(reactor->lanes.members(), 0u);
  lane->loadIs(1);
  EXPECT_THAT(owner.heard, IsEmpty());
}

TEST_F(NestedReactorsTest, GetTheNotificationFlagOfTheReactorThatNamesThem) {
  port->laneIs(key);
  auto reactor = make<LanesReactor>(owner, port);
  reactor->hasNotificationActiveIs(true);
  EXPECT_TRUE(reactor->hasNotificationActive());
  EXPECT_TRUE(reactor->lanes.find(key)->hasNotificationActive());
}

}  // namespace
}  // namespace Vesk::Test
