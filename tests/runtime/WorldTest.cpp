#include "runtime/World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "runtime/TimerWheel.h"
#include "tests/runtime/TestEntity.h"
#include "tests/support/RecordingWorld.h"

namespace Vesk::Test {
namespace {

using testing::IsEmpty;

TraceHandle const traceHandle("WorldTest");

/// Shares nothing with the other worlds of the tests.
class OwnWorld final : public World {
 public:
  explicit OwnWorld(double time = 0) : time_(time) {}
  double now() const override { return time_; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t>) override {}
  void syslog(LogMessage const&) override {}
  void trace(TraceRecord const& record) override { traced.push_back(record.text); }
  void attributeWritten(AttributeWrite const& write) override {
    written.push_back(write.attribute);
  }
  void exit(int) override {}

  std::vector<std::string> traced;
  std::vector<std::string> written;

 private:
  double time_;
};

/// Follows the attribute log of one world.
struct Follower final : AttributeFollower {
  explicit Follower(World& world) : world_(world) { world_.attributeFollowerIs(*this); }
  ~Follower() { world_.attributeFollowerDel(*this); }
  void attributeWritten(AttributeWrite const& write) override {
    written.push_back(write.attribute);
  }
  std::vector<std::string> written;

 private:
  World& world_;
};

// What a switch does outside of any world would reach nobody: neither store nor log.
TEST(WorldDeathTest, IsThereWhereverASwitchDoesSomething) {
  static LogHandle const handle("WORLD_UNSET", LogSeverity::notice, "text", "", NoActionRequired,
                                0.0, 0.0);
  auto const port = make<Port>();
  auto const outside = [](auto deed) {
    Support::CommonWorld::scope().reset();
    deed();
  };
  char const* const failure = "World.cpp:.*world.*the switch runs in its world";
  EXPECT_DEATH(outside([&] { port->speedIs(1); }), failure);
  EXPECT_DEATH(outside([&] { port->laneIs(Lumo::IntfId("Ethernet1")); }), failure);
  EXPECT_DEATH(outside([] { log(handle); }), failure);
  EXPECT_DEATH(outside([] { now(); }), failure);
  EXPECT_DEATH(outside([] { flushEntityLogOutputBuffer(); }), failure);
}

TEST(World, TellsItsOwnFollowersOfWritesAlone) {
  OwnWorld first, second;
  Follower const inFirst(first);
  auto const port = make<Port>();
  {
    Follower const inSecond(second);
    WorldScope const scope(second);
    port->speedIs(1);
    EXPECT_EQ(inSecond.written, std::vector<std::string>{"speed"});
  }
  EXPECT_FALSE(second.switches().writesAreLogged);
  EXPECT_THAT(inFirst.written, IsEmpty());
  WorldScope const scope(first);
  port->speedIs(2);
  EXPECT_EQ(inFirst.written, std::vector<std::string>{"speed"});
  EXPECT_THAT(first.written, IsEmpty()) << "the world itself takes what it has asked for";
}

TEST(World, TellsWhoStandsBehindAFollowerThatLeavesWhileItIsTold) {
  struct Leaver final : AttributeFollower {
    void attributeWritten(AttributeWrite const&) override {
      world().attributeFollowerDel(*this);
      if (other) world().attributeFollowerDel(*other);
      ++told;
    }
    AttributeFollower* other = nullptr;
    int told = 0;
  };
  OwnWorld own;
  WorldScope const scope(own);
  Leaver leaver, left;
  leaver.other = &left;
  own.attributeFollowerIs(leaver);
  own.attributeFollowerIs(left);
  Follower const behind(own);
  auto const port = make<Port>();
  port->speedIs(1);
  port->speedIs(2);
  EXPECT_EQ(leaver.told, 1);
  EXPECT_EQ(left.told, 0);
  EXPECT_EQ(behind.written.size(), 2u);
}

TEST(World, TakesTheAttributeLogWhileItIsOnWhoeverFollows) {
  OwnWorld own;
  WorldScope const scope(own);
  own.attributeLogIs(true);
  { Follower const another(own); }
  auto const port = make<Port>();
  port->speedIs(1);
  EXPECT_EQ(own.written, std::vector<std::string>{"speed"});
  own.attributeLogIs(false);
  port->speedIs(2);
  EXPECT_EQ(own.written.size(), 1u);
}

TEST(World, HasTraceLevelsOfItsOwn) {
  OwnWorld first, second;
  {
    WorldScope const scope(first);
    TraceHandle::streamLevelsIs("WorldTest", 1 << 3);
    VESK_TRACE(3, ": in the first");
  }
  EXPECT_TRUE(traceHandle.isEnabled(3));
  {
    WorldScope const scope(second);
    VESK_TRACE(3, ": in the second");
  }
  EXPECT_EQ(first.traced.size(), 1u);
  EXPECT_THAT(second.traced, IsEmpty());
}

TEST(World, TakesItsTraceLevelsAlongWhenItEnds) {
  {
    OwnWorld own;
    WorldScope const scope(own);
    TraceHandle::streamLevelsIs("WorldTest", kAllTraceLevels);
    TraceHandle::streamLevelsIs("WorldTest", 1 << 8 | 1 << 1);
    EXPECT_FALSE(traceHandle.isEnabled(3));
    EXPECT_TRUE(traceHandle.isEnabled(8));
  }
  for (FacilityLevel level = 0; level < 10; ++level) EXPECT_FALSE(traceHandle.isEnabled(level));
}

TEST(World, KeepsOneOfEachTypeForTheRooms) {
  OwnWorld first, second;
  first.kept<int>() = 7;
  EXPECT_EQ(first.kept<int>(), 7);
  EXPECT_EQ(first.kept<unsigned>(), 0u);
  EXPECT_EQ(second.kept<int>(), 0);
}

TEST(World, OfATimerWheelIsWhereItsTimersFire) {
  struct Timer final : Zorn::TimerWheel::Notifiee {
    explicit Timer(Ptr<Zorn::TimerWheel> wheel) : Notifiee(std::move(wheel)) {}
    void onTime() override { firedAt = now(); }
    double firedAt = 0;
  };
  OwnWorld own(5);
  auto const wheel = make<Zorn::TimerWheel>(own);
  auto const timer = make<Timer>(wheel);
  timer->timeMinIs(4);
  EXPECT_EQ(wheel->runDue(), 1u);
  EXPECT_EQ(timer->firedAt, 5);
  timer->timeMinIs(4.5);
  timer->firedAt = 0;
  EXPECT_TRUE(wheel->runOne());
  EXPECT_EQ(timer->firedAt, 5);
}

TEST(World, ScopesNestAndTheFormerOneComesBack) {
  RecordingWorld outer;
  outer.time = 1.0;
  EXPECT_EQ(now(), 1.0);
  {
    RecordingWorld inner;
    inner.time = 2.0;
    EXPECT_EQ(now(), 2.0);
  }
  EXPECT_EQ(now(), 1.0);
  EXPECT_EQ(&world(), &outer);
}

TEST(World, EndOfTheProcessGoesThroughIt) {
  RecordingWorld recording;
  world().exit(0);
  EXPECT_EQ(recording.exits, std::vector<int>{0});
}

}  // namespace
}  // namespace Vesk::Test
