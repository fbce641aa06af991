#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "tests/runtime/TestEntity.h"

namespace Vesk::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class VisitTest : public testing::Test {
 protected:
  Ptr<PortReactor> reactor(char const* name, Lumo::IntfId key = Lumo::IntfId()) {
    return make<PortReactor>(owner, port, name, key);
  }

  Owner owner;
  Ptr<Port> port = make<Port>();
};

TEST_F(VisitTest, CallsReactorsInOrderOfAttachment) {
  auto a = reactor("a"), b = reactor("b"), c = reactor("c");
  b->isRegisteredNotifieeIs(false);
  b->isRegisteredNotifieeIs(true);
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "c speed", "b speed"));
}

TEST_F(VisitTest, DoesNotCallWhoJoinsDuringIt) {
  auto a = reactor("a");
  Ptr<PortReactor> joined;
  owner.then = [&](auto&) {
    if (!joined) joined = reactor("new");
  };
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed"));
  owner.heard.clear();
  port->speedIs(2);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "new speed"));
}

TEST_F(VisitTest, DoesNotCallWhoHasLeft) {
  auto a = reactor("a"), b = reactor("b"), c = reactor("c");
  owner.then = [&](auto& what) {
    if (what == "a speed") b->isRegisteredNotifieeIs(false);
  };
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "c speed"));
}

TEST_F(VisitTest, GoesOnWhenTheOneCalledLeaves) {
  auto a = reactor("a"), b = reactor("b"), c = reactor("c");
  owner.then = [&](auto& what) {
    if (what == "b speed") b->isRegisteredNotifieeIs(false);
  };
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "b speed", "c speed"));
  EXPECT_EQ(port->notifiees(), 2u);
}

TEST_F(VisitTest, GoesOnWhenReactorsDieBeforeAtAndBehindItsPlace) {
  std::map<std::string, Ptr<PortReactor>> all;
  for (char const* name : {"a", "b", "c", "d", "e"}) all[name] = reactor(name);
  owner.then = [&](auto& what) {
    if (what != "c speed") return;
    for (char const* name : {"a", "b", "c", "d"}) all.erase(name);
  };
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "b speed", "c speed", "e speed"));
  EXPECT_EQ(port->notifiees(), 1u);
}

TEST_F(VisitTest, HoldsTheReactorThatDestroysItselfUntilItsHandlerReturns) {
  auto a = reactor("a");
  owner.then = [&](auto&) {
    PortReactor* self = a.ptr();
    a = nullptr;
    EXPECT_EQ(self->references(), 1u);
    EXPECT_EQ(self->notifier(), port);
  };
  port->speedIs(1);
  EXPECT_EQ(port->notifiees(), 0u);
}

TEST_F(VisitTest, DoesNotCallWhoIsMarkedForDeletion) {
  auto a = reactor("a"), b = reactor("b");
  owner.then = [&](auto&) { b->isMarkedForDeletionIs(true); };
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed"));
  owner.then = nullptr;
  b->isMarkedForDeletionIs(false);
  port->speedIs(2);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "a speed", "b speed"));
}

TEST_F(VisitTest, NotificationFlagGatesNoDelivery) {
  auto a = reactor("a");
  EXPECT_FALSE(a->hasNotificationActive());
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed"));
}

TEST_F(VisitTest, NestsDepthFirstOnTheWritersStack) {
  auto a = reactor("a"), b = reactor("b");
  owner.then = [&](auto& what) {
    if (what == "a speed") port->labelIs("x");
  };
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "a label", "b label", "b speed"));
}

// The list is visited three times at once; the innermost visit makes reactors on it and destroys
// others under the two running ones.
TEST_F(VisitTest, SurvivesTwoMoreOfTheSameListWithReactorsBuiltAndDestroyedUnderneath) {
  std::map<std::string, Ptr<PortReactor>> all;
  for (char const* name : {"a", "b", "c", "d"}) all[name] = reactor(name);
  owner.then = [&](auto& what) {
    if (what == "b speed") port->labelIs("x");
    if (what == "a label") all["child"] = reactor("child");
    if (what == "c label") port->laneIs(Lumo::IntfId("1"));
    if (what != "a lane 1") return;
    for (char const* name : {"b", "c", "child"}) retire(all[name]);
    all["late"] = reactor("late");
  };
  port->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "b speed",             //
                                       "a label", "b label", "c label",  //
                                       "a lane 1", "d lane 1",           //
                                       "d label", "d speed"));
  owner.heard.clear();
  owner.then = nullptr;
  port->speedIs(2);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "d speed", "late speed"));
}

TEST_F(VisitTest, LeavesTheListFitForTheNextOneWhenAHandlerThrows) {
  auto a = reactor("a"), b = reactor("b");
  owner.then = [&](auto&) { throwInternalException("from a handler"); };
  EXPECT_THROW(port->speedIs(1), InternalException);
  EXPECT_EQ(port->speed(), 1u);
  owner.then = nullptr;
  owner.heard.clear();
  a = nullptr;
  port->speedIs(2);
  EXPECT_THAT(owner.heard, ElementsAre("b speed"));
}

TEST_F(VisitTest, EndsWhenTheNotifierDiesDuringIt) {
  Ptr<Port> other = make<Port>("other");
  auto a = reactor("a"), b = reactor("b"), c = reactor("c");
  Port* raw = port.ptr();
  owner.then = [&](auto& what) {
    if (what != "a speed") return;
    port = nullptr;
    for (auto& r : {a, b, c}) r->notifierIs(nullptr);
  };
  raw->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed"));
  EXPECT_FALSE(b->isRegisteredNotifiee());
  b->notifierIs(other);
  EXPECT_EQ(other->notifiees(), 1u);
}

TEST_F(VisitTest, EndsOnAllLevelsWhenTheNotifierDiesInTheInnermost) {
  auto a = reactor("a"), b = reactor("b");
  Port* raw = port.ptr();
  owner.then = [&](auto& what) {
    if (what == "a speed") raw->labelIs("x");
    if (what == "a label") raw->laneIs(Lumo::IntfId("1"));
    if (what != "a lane 1") return;
    port = nullptr;
    a->notifierIs(nullptr);
    b->notifierIs(nullptr);
  };
  raw->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("a speed", "a label", "a lane 1"));
}

TEST_F(VisitTest, ToldKeyOutlivesTheMemberThatItCameFrom) {
  auto a = reactor("a"), b = reactor("b");
  owner.then = [&](auto& what) {
    if (what == "a note first") port->noteDelAll();
  };
  auto name = std::make_unique<Name>(Name("fir") + "st");
  port->noteIs(*name, 1);
  EXPECT_THAT(owner.heard,
              ElementsAre("a note first", "a note first", "b note first", "b note first"));
}

// A list of its own, with a notifiee that only listens for the end of the notifier.
class Mourner final : public NotifieeBase {
 public:
  explicit Mourner(Notifier& notifier) { enter(notifier.notifieeList(), 1); }
  void onZeroReferences() override { ++mourned; }
  int mourned = 0;
};

TEST_F(VisitTest, LastReferenceToldToTheNotifieesOnce) {
  auto mourner = make<Mourner>(*port);
  Ptr<Port> second = port;
  port = nullptr;
  EXPECT_EQ(mourner->mourned, 0);
  second = nullptr;
  EXPECT_EQ(mourner->mourned, 1);
  EXPECT_FALSE(mourner->isRegisteredNotifiee());
}

TEST_F(VisitTest, ReactorThatHoldsTheLastReferenceToItsNotifierTakesItAlong) {
  auto a = reactor("a");
  auto mourner = make<Mourner>(*port);
  port = nullptr;
  EXPECT_EQ(mourner->mourned, 0);
  a = nullptr;
  EXPECT_EQ(mourner->mourned, 1);
  EXPECT_THAT(owner.heard, IsEmpty());
}

}  // namespace
}  // namespace Vesk::Test
