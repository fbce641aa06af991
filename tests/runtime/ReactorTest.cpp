#include "runtime/Reactor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/runtime/TestEntity.h"

namespace Vesk::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ReactorTest : public testing::Test {
 protected:
  Owner owner;
  Ptr<Port> port = make<Port>("first");
  Ptr<Port> other = make<Port>("other");
};

TEST_F(ReactorTest, AttachesAtConstructionWithoutCatchUp) {
  auto r = make<PortReactor>(owner, port, "r");
  EXPECT_TRUE(r->isRegisteredNotifiee());
  EXPECT_TRUE(r->notifier() == port);
  EXPECT_EQ(&r->owner(), &owner);
  EXPECT_THAT(owner.heard, IsEmpty());
}

TEST_F(ReactorTest, RepointedRunsTheWatchedHandlersInAttributeOrder) {
  auto r = make<PortReactor>(owner, port, "r");
  r->notifierIs(other);
  EXPECT_THAT(owner.heard, ElementsAre("r speed", "r label", "r lanes", "r notes"));
  EXPECT_TRUE(r->hasNotificationActive());
  EXPECT_EQ(port->notifiees(), 0u);
  EXPECT_EQ(other->notifiees(), 1u);
  auto s = make<SpeedReactor>(owner, port, "s");
  owner.heard.clear();
  s->notifierIs(other);
  EXPECT_THAT(owner.heard, ElementsAre("s speed"));
}

TEST_F(ReactorTest, RepointedToTheSameNotifierRunsNoCatchUp) {
  auto r = make<PortReactor>(owner, port, "r");
  r->notifierIs(port);
  EXPECT_THAT(owner.heard, IsEmpty());
  EXPECT_FALSE(r->hasNotificationActive());
}

TEST_F(ReactorTest, HandlerThatMarksItStopsTheRestOfTheCatchUp) {
  auto r = make<PortReactor>(owner, port, "r");
  owner.then = [&](auto& what) {
    if (what == "r label") r->retire();
  };
  r->notifierIs(other);
  EXPECT_THAT(owner.heard, ElementsAre("r speed", "r label"));
  EXPECT_EQ(other->notifiees(), 0u);
}

TEST_F(ReactorTest, MarkedOneIsRepointedWithoutCatchUp) {
  auto r = make<PortReactor>(owner, port, "r");
  r->isMarkedForDeletionIs(true);
  r->notifierIs(other);
  other->speedIs(1);
  EXPECT_THAT(owner.heard, IsEmpty());
  EXPECT_TRUE(r->notifier() == other);
}

TEST_F(ReactorTest, LivesThroughACatchUpThatDropsItsLastReference) {
  auto r = make<PortReactor>(owner, port, "r");
  PortReactor* raw = r.ptr();
  owner.then = [&](auto& what) {
    if (what == "r speed") retire(r);
  };
  raw->notifierIs(other);
  EXPECT_THAT(owner.heard, ElementsAre("r speed"));
  EXPECT_FALSE(r);
}

TEST_F(ReactorTest, WithoutNotifierHearsNothingAndTakesOneUpLater) {
  auto r = make<PortReactor>(owner, nullptr, "r");
  EXPECT_FALSE(r->isRegisteredNotifiee());
  r->notifierIs(port);
  EXPECT_THAT(owner.heard, ElementsAre("r speed", "r label", "r lanes", "r notes"));
  owner.heard.clear();
  r->notifierIs(nullptr);
  EXPECT_FALSE(r->isRegisteredNotifiee());
  EXPECT_EQ(port->notifiees(), 0u);
  EXPECT_THAT(owner.heard, IsEmpty());
}

TEST_F(ReactorTest, HoldsItsNotifier) {
  auto r = make<PortReactor>(owner, port, "r");
  Port* raw = port.ptr();
  port = nullptr;
  raw->speedIs(1);
  EXPECT_THAT(owner.heard, ElementsAre("r speed"));
  r->notifierIs(other);
}

TEST_F(ReactorTest, RetiredHearsNothingMore) {
  auto r = make<PortReactor>(owner, port, "r");
  Ptr<PortReactor> kept = r;
  retire(r);
  EXPECT_FALSE(r);
  EXPECT_TRUE(kept->isMarkedForDeletion());
  EXPECT_FALSE(kept->isRegisteredNotifiee());
  port->speedIs(1);
  EXPECT_THAT(owner.heard, IsEmpty());
  retire(r);
}

class ViewReactor final : public Reactor<Port const, Owner, ViewReactor> {
 public:
  using Reactor::Reactor;
  void onSpeed() override { owner().hear(std::to_string(notifier()->speed())); }
};

TEST_F(ReactorTest, OnAReadOnlyViewHearsTheSame) {
  auto r = make<ViewReactor>(owner, Ptr<Port const>(port));
  port->speedIs(4);
  EXPECT_THAT(owner.heard, ElementsAre("4"));
}

// A state machine with a child.
class Machine final : public PtrInterface {
 public:
  explicit Machine(std::vector<std::string>& events) : events_(events) {}
  ~Machine() override { events_.push_back("destroyed"); }
  void hasNotificationActiveIs(bool active) override {
    PtrInterface::hasNotificationActiveIs(active);
    events_.push_back(active ? "on" : "off");
    passNotificationActive(active, child, absent);
  }
  Ptr<Machine> child, absent;

 private:
  std::vector<std::string>& events_;
};

TEST(Machines, AreSwitchedOnOnceTheyAreConstructed) {
  std::vector<std::string> events;
  Ptr<Machine> made = makeActive<Machine>(events);
  EXPECT_TRUE(made->hasNotificationActive());
  EXPECT_THAT(events, ElementsAre("on"));
}

TEST(Machines, PassTheNotificationFlagOnToWhatTheyHaveAndSkipNulls) {
  std::vector<std::string> events;
  Ptr<Machine> made = make<Machine>(events);
  made->child = make<Machine>(events);
  made->hasNotificationActiveIs(true);
  EXPECT_TRUE(made->child->hasNotificationActive());
  EXPECT_THAT(events, ElementsAre("on", "on"));
}

TEST(Machines, DeletedAreSwitchedOffFirstAndThenDestroyed) {
  std::vector<std::string> events;
  Ptr<Machine> child = makeActive<Machine>(events);
  childDel(child);
  EXPECT_FALSE(child);
  EXPECT_THAT(events, ElementsAre("on", "off", "destroyed"));
  childDel(child);
}

}  // namespace
}  // namespace Vesk::Test
