#include "runtime/TimerWheel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tests/support/RecordingWorld.h"

namespace Zorn::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Vesk::make;
using Vesk::Ptr;

struct Owner {
  std::vector<std::string> fired;
  std::function<void(std::string const&)> then;
};

class Timer final : public TimerReactor<Owner> {
 public:
  Timer(Owner& owner, Ptr<TimerWheel> wheel, std::string name)
      : TimerReactor(owner, std::move(wheel)), name_(std::move(name)) {}
  void onTime() override {
    owner().fired.push_back(name_);
    if (owner().then) owner().then(name_);
  }

 private:
  std::string name_;
};

class TimerWheelTest : public testing::Test {
 protected:
  Ptr<Timer> timer(char const* name) { return make<Timer>(owner, wheel, name); }
  Ptr<Timer> armed(char const* name, double time) {
    auto made = timer(name);
    made->timeMinIs(time);
    return made;
  }
  size_t passAt(double time) {
    recording.time = time;
    return wheel->runDue();
  }

  Vesk::Test::RecordingWorld recording;
  Owner owner;
  Ptr<TimerWheel> wheel = make<TimerWheel>();
};

TEST_F(TimerWheelTest, NewTimerIsNotArmedAndNeverFires) {
  auto t = timer("t");
  EXPECT_FALSE(t->isArmed());
  EXPECT_GT(t->time(), 1.7976931348623157e+308);
  EXPECT_EQ(wheel->armed(), 0u);
  EXPECT_EQ(wheel->nextTime(), never);
  EXPECT_EQ(passAt(1e300), 0u);
  EXPECT_THAT(owner.fired, IsEmpty());
}

TEST_F(TimerWheelTest, FiresWhenTheClockHasReachedItsTime) {
  auto t = armed("t", 5.0);
  EXPECT_TRUE(t->isArmed());
  EXPECT_EQ(wheel->nextTime(), 5.0);
  EXPECT_EQ(passAt(4.999), 0u);
  EXPECT_EQ(passAt(5.0), 1u);
  EXPECT_EQ(passAt(6.0), 0u);
}

TEST_F(TimerWheelTest, ArmedForThePastFiresOnTheNextPass) {
  recording.time = 10.0;
  auto t = armed("t", 3.0);
  EXPECT_THAT(owner.fired, IsEmpty());
  EXPECT_EQ(wheel->runDue(), 1u);
}

TEST_F(TimerWheelTest, ArmedTwiceFiresOnceAtTheLaterGivenTime) {
  auto t = armed("t", 5.0);
  t->timeMinIs(8.0);
  EXPECT_EQ(passAt(5.0), 0u);
  EXPECT_EQ(passAt(8.0), 1u);
  t->timeMinIs(20.0);
  t->timeMinIs(12.0);
  EXPECT_EQ(passAt(12.0), 1u);
  EXPECT_EQ(passAt(20.0), 0u);
}

TEST_F(TimerWheelTest, ArmedAgainWithTheTimeThatItHasFiresAgain) {
  auto t = armed("t", 5.0);
  EXPECT_EQ(passAt(5.0), 1u);
  EXPECT_EQ(t->time(), 5.0);
  t->timeMinIs(5.0);
  EXPECT_EQ(wheel->runDue(), 1u);
  EXPECT_EQ(wheel->runDue(), 0u);
}

TEST_F(TimerWheelTest, DisarmedBeforeItsTimeDoesNotFire) {
  auto t = armed("t", 5.0);
  t->timeMinIs(never);
  EXPECT_FALSE(t->isArmed());
  EXPECT_EQ(passAt(9.0), 0u);
  EXPECT_EQ(wheel->armed(), 0u);
}

TEST_F(TimerWheelTest, ExpiryDoesNotChangeTheTime) {
  auto t = armed("t", 5.0);
  owner.then = [&](auto&) { EXPECT_EQ(t->time(), 5.0); };
  passAt(7.0);
  EXPECT_EQ(t->time(), 5.0);
  EXPECT_EQ(wheel->armed(), 0u);
}

TEST_F(TimerWheelTest, TimersFireByTimeAndThenInOrderOfArming) {
  auto a = armed("a", 5.0), b = armed("b", 4.0), c = armed("c", 5.0), d = armed("d", 5.0);
  a->timeMinIs(5.0);
  EXPECT_EQ(passAt(5.0), 4u);
  EXPECT_THAT(owner.fired, ElementsAre("b", "c", "d", "a"));
}

TEST_F(TimerWheelTest, HandlerThatDestroysRetiresAndDisarmsOtherDueTimersKeepsThemFromFiring) {
  auto a = armed("a", 1.0), b = armed("b", 1.0), c = armed("c", 1.0), d = armed("d", 1.0),
       e = armed("e", 1.0);
  owner.then = [&](auto& name) {
    if (name != "a") return;
    b = nullptr;
    c->retire();
    d->timeMinIs(never);
  };
  EXPECT_EQ(passAt(1.0), 2u);
  EXPECT_THAT(owner.fired, ElementsAre("a", "e"));
}

TEST_F(TimerWheelTest, HandlerThatDestroysItsOwnTimerReturnsFirst) {
  auto t = armed("t", 1.0);
  Timer* raw = t.ptr();
  owner.then = [&](auto&) {
    t = nullptr;
    EXPECT_EQ(raw->references(), 1u);
  };
  EXPECT_EQ(passAt(1.0), 1u);
}

TEST_F(TimerWheelTest, RetiredTimerIsNotArmedAgain) {
  auto t = armed("t", 1.0);
  t->retire();
  t->timeMinIs(1.0);
  EXPECT_EQ(passAt(1.0), 0u);
}

TEST_F(TimerWheelTest, ArmedForThePastInAPassFiresInTheNextOneAndHidesNoneThatIsDue) {
  auto a = armed("a", 1.0), b = armed("b", 2.0), c = armed("c", 3.0);
  owner.then = [&](auto& name) {
    if (name == "a") a->timeMinIs(0.5);
  };
  EXPECT_EQ(passAt(3.0), 3u);
  EXPECT_THAT(owner.fired, ElementsAre("a", "b", "c"));
  owner.then = nullptr;
  EXPECT_LE(wheel->nextTime(), 3.0);
  EXPECT_EQ(wheel->runDue(), 1u);
}

TEST_F(TimerWheelTest, ArmedForNowInAPassFiresInTheNextOne) {
  auto a = armed("a", 1.0);
  owner.then = [&](auto&) { a->timeMinIs(Vesk::now()); };
  EXPECT_EQ(passAt(1.0), 1u);
  EXPECT_EQ(wheel->runDue(), 1u);
}

TEST_F(TimerWheelTest, HandlerThatThrowsEndsThePassAndTheNextOneGoesOn) {
  auto a = armed("a", 1.0), b = armed("b", 1.0);
  owner.then = [](auto&) { Vesk::throwInternalException("from a handler"); };
  EXPECT_THROW(passAt(1.0), Vesk::InternalException);
  owner.then = nullptr;
  EXPECT_EQ(wheel->runDue(), 1u);
  EXPECT_THAT(owner.fired, ElementsAre("a", "b"));
}

TEST_F(TimerWheelTest, RunsOneAtATime) {
  auto a = armed("a", 1.0), b = armed("b", 1.0);
  recording.time = 1.0;
  EXPECT_TRUE(wheel->runOne());
  EXPECT_THAT(owner.fired, ElementsAre("a"));
  EXPECT_TRUE(wheel->runOne());
  EXPECT_FALSE(wheel->runOne());
}

TEST_F(TimerWheelTest, TimerKeepsTheWheel) {
  auto t = armed("t", 1.0);
  TimerWheel* raw = wheel.ptr();
  wheel = nullptr;
  recording.time = 1.0;
  EXPECT_EQ(raw->runDue(), 1u);
}

// Random arming, disarming, destruction and passing of time, beside a list that is searched anew
// for each expiry.
TEST_F(TimerWheelTest, DoesTheSameAsANaiveModelUnderRandomOperations) {
  struct Model {
    double time;
    uint64_t arming;
    std::string name;
  };
  std::mt19937 draw(3);  // tidy: allow(randomness) seeded, to draw operations
  std::vector<Ptr<Timer>> timers(40);
  std::vector<Model> model;
  std::vector<std::string> expected;
  uint64_t armings = 0;
  auto forget = [&](std::string const& name) {
    std::erase_if(model, [&](Model const& m) { return m.name == name; });
  };
  for (int step = 0; step < 20000; ++step) {
    size_t const i = draw() % timers.size();
    std::string const name = std::to_string(i);
    switch (draw() % 8) {
      case 0:
        timers[i] = nullptr;
        forget(name);
        break;
      case 1:
        if (timers[i]) timers[i]->timeMinIs(never);
        forget(name);
        break;
      case 2:
        recording.time += static_cast<double>(draw() % 4);
        wheel->runDue();
        std::sort(model.begin(), model.end(), [](Model const& a, Model const& b) {
          return std::pair(a.time, a.arming) < std::pair(b.time, b.arming);
        });
        while (!model.empty() && model.front().time <= recording.time) {
          expected.push_back(model.front().name);
          model.erase(model.begin());
        }
        break;
      default:
        if (!timers[i]) timers[i] = timer(name.c_str());
        double const time = recording.time - 2.0 + static_cast<double>(draw() % 12);
        timers[i]->timeMinIs(time);
        forget(name);
        model.push_back({time, ++armings, name});
    }
    ASSERT_EQ(wheel->armed(), model.size());
  }
  EXPECT_GT(expected.size(), 1000u);
  EXPECT_EQ(owner.fired, expected);
}

}  // namespace
}  // namespace Zorn::Test
