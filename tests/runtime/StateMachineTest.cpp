#include "runtime/StateMachine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "runtime/TimerWheel.h"
#include "runtime/Trace.h"
#include "tests/runtime/TestEntity.h"
#include "tests/support/TestWorld.h"

namespace Vesk::Test {
namespace {

using ::testing::ElementsAre;

TraceHandle traceHandle("StateMachineTest");

/// A state machine over a port: a new speed becomes a label, in steps that it takes down.
class Machine final : public StateMachine {
 public:
  Machine(std::vector<std::string>& steps, Ptr<Port> port, Ptr<Zorn::TimerWheel> wheel)
      : Machine(Unstarted(), steps, std::move(port), std::move(wheel)) {
    handleInitialized();
  }
  Machine(Unstarted, std::vector<std::string>& steps, Ptr<Port> port, Ptr<Zorn::TimerWheel> wheel)
      : steps_(steps),
        port_(make<SpeedOfPort>(*this, std::move(port))),
        timer_(make<Timer>(*this, std::move(wheel))) {}
  ~Machine() override { step("destroyed"); }

  Lumo::IntfId fwkKey() const { return Lumo::IntfId("1"); }
  Port& port() const { return *port_->notifier(); }
  void hasNotificationActiveIs(bool active) override {
    StateMachine::hasNotificationActiveIs(active);
    step(active ? "on" : "off");
  }

  void handleInitialized() { handleSpeed(); }
  void handleSpeed() {
    step("before");
    port().labelIs("speed " + std::to_string(port().speed()));
    step("after");
  }
  void timeIs(double time) { timer_->timeMinIs(time); }
  void traceThenStep() {
    VESK_TRACE(3, "");
    step("after the trace");
  }

 private:
  struct SpeedOfPort final : Reactor<Port, Machine, SpeedOfPort> {
    using Reactor::Reactor;
    void onSpeed() override { owner().handleSpeed(); }
  };
  struct Timer final : Zorn::TimerReactor<Machine> {
    using TimerReactor::TimerReactor;
    void onTime() override { owner().traceThenStep(); }
  };

  void end() override {
    step("end");
    port().labelIs("");
    endReactors(port_, timer_);
  }
  void step(char const* what) { steps_.push_back(what); }

  std::vector<std::string>& steps_;
  Ptr<SpeedOfPort> port_;
  Ptr<Timer> timer_;
};

class StateMachineTest : public testing::Test {
 protected:
  StateMachineTest() : agent(make<PortReactor>(owner, port, "agent")) {}
  ~StateMachineTest() override { retire(agent); }

  Ptr<Machine> newMachine() { return make<Machine>(Unstarted(), steps, port, wheel); }
  /// The agent runs this inside the next notification of the label.
  void insideLabel(std::function<void()> run) {
    inside_ = std::move(run);
    owner.then = [this](std::string const& what) {
      if (what != "agent label" || !inside_) return;
      std::exchange(inside_, nullptr)();
      steps.push_back("agent goes on");
    };
  }

  Support::TestWorld world{1};
  WorldScope scope{world};
  std::vector<std::string> steps;
  Owner owner;
  Ptr<Port> port = make<Port>("port");
  Ptr<Zorn::TimerWheel> wheel = make<Zorn::TimerWheel>();
  Ptr<PortReactor> agent;
  Ptr<Machine> machine;
  HashMap<Machine, Lumo::IntfId> machines;

 private:
  std::function<void()> inside_;
};

TEST_F(StateMachineTest, EndedInsideItsOwnWriteIsNotContinuedAndStaysUntilItsHandlerHasLeft) {
  machine = newMachine();
  insideLabel([this] { machine = nullptr; });
  port->speedIs(1);
  EXPECT_THAT(steps, ElementsAre("before", "end", "agent goes on", "destroyed"));
  EXPECT_EQ(port->label(), "");
  port->speedIs(2);
  EXPECT_EQ(steps.size(), 4u);
}

TEST_F(StateMachineTest, NotEndedIsContinued) {
  machine = newMachine();
  insideLabel([] {});
  port->speedIs(1);
  EXPECT_THAT(steps, ElementsAre("before", "agent goes on", "after"));
}

TEST_F(StateMachineTest, EndedInsideLeavesAllOfItsHandlersThatAreOnTheStack) {
  machine = newMachine();
  insideLabel([this] {
    insideLabel([this] { machine = nullptr; });
    port->speedIs(2);
  });
  port->speedIs(1);
  EXPECT_THAT(
      steps, ElementsAre("before", "before", "end", "agent goes on", "agent goes on", "destroyed"));
}

TEST_F(StateMachineTest, EndedInsideAWriteLeavesTheOthersToBeTold) {
  machine = newMachine();
  auto late = make<PortReactor>(owner, port, "late");
  insideLabel([this] { machine = nullptr; });
  port->speedIs(1);
  EXPECT_THAT(owner.heard, testing::Contains("late label"));
  EXPECT_THAT(owner.heard, testing::Contains("late speed"));
  retire(late);
}

TEST_F(StateMachineTest, EndedByAChildsOwnerKeepsItsPlaceUntilItsCleanUpIsDone) {
  childIs(machine, newMachine());
  steps.clear();
  Machine* const ending = machine.ptr();
  insideLabel([&] {
    EXPECT_EQ(machine.ptr(), ending);
    EXPECT_TRUE(machine->isEnding());
    childDel(machine);
    EXPECT_EQ(machine.ptr(), ending);
  });
  childDel(machine);
  EXPECT_FALSE(machine);
  EXPECT_THAT(steps, ElementsAre("off", "end", "agent goes on", "destroyed"));
}

TEST_F(StateMachineTest, HeldByAnotherEndsOnceAndStaysAsLongAsItIsHeld) {
  childIs(machines, newMachine());
  Ptr<Machine> held = machines[Lumo::IntfId("1")];
  steps.clear();
  childDel(machines, Lumo::IntfId("1"));
  EXPECT_TRUE(machines.empty());
  EXPECT_TRUE(held->isEnding());
  EXPECT_THAT(steps, ElementsAre("off", "end"));
  held = nullptr;
  EXPECT_THAT(steps, ElementsAre("off", "end", "destroyed"));
}

TEST_F(StateMachineTest, ChildIsEnteredBeforeItStarts) {
  insideLabel([this] { EXPECT_TRUE(machine); });
  EXPECT_TRUE(childIs(machine, newMachine()) == machine);
  EXPECT_THAT(steps, ElementsAre("before", "agent goes on", "after", "on"));
  childDel(machine);
}

TEST_F(StateMachineTest, ChildThatIsEndedWhileItStartsIsGone) {
  insideLabel([this] { childDel(machine); });
  EXPECT_FALSE(childIs(machine, newMachine()));
  EXPECT_THAT(steps, ElementsAre("before", "off", "end", "agent goes on", "destroyed"));
  steps.clear();
  insideLabel([this] { childDel(machines, Lumo::IntfId("1")); });
  EXPECT_FALSE(childIs(machines, newMachine()));
  EXPECT_TRUE(machines.empty());
  EXPECT_THAT(steps, ElementsAre("before", "off", "end", "agent goes on", "destroyed"));
}

TEST_F(StateMachineTest, EndedInsideATraceOfItsTimersHandlerIsNotContinued) {
  struct TracedWorld final : Support::TestWorld {
    explicit TracedWorld(Ptr<Machine>& ends) : TestWorld(1), machine(ends) {}
    void trace(TraceRecord const&) override { machine = nullptr; }
    Ptr<Machine>& machine;
  } traced(machine);
  WorldScope inner(traced);
  wheel = make<Zorn::TimerWheel>();
  machine = newMachine();
  machine->timeIs(0);
  TraceHandle::streamLevelsIs("StateMachineTest", kAllTraceLevels);
  EXPECT_EQ(wheel->runDue(), 1u);
  TraceHandle::streamLevelsIs("StateMachineTest", 0);
  EXPECT_THAT(steps, ElementsAre("end", "destroyed"));
}

TEST_F(StateMachineTest, EndedInsideItsCatchUpIsNotContinued) {
  struct Follower final : StateMachine {
    explicit Follower(std::vector<std::string>& seen, Ptr<Port> port)
        : steps(seen), reactor(make<Both>(*this, std::move(port))) {}
    struct Both final : Reactor<Port, Follower, Both> {
      using Reactor::Reactor;
      void onSpeed() override {
        notifier()->noteIs("told", 1);
        owner().steps.push_back("after");
      }
      void onLabel() override { owner().steps.push_back("label"); }
    };
    void end() override { endReactors(reactor); }
    std::vector<std::string>& steps;
    Ptr<Both> reactor;
  };
  auto follower = make<Follower>(steps, make<Port>("other"));
  Ptr<Follower::Both> reactor = follower->reactor;
  owner.then = [&](std::string const& what) {
    if (what == "agent note told") follower = nullptr;
  };
  reactor->notifierIs(port);
  EXPECT_TRUE(steps.empty());
}

TEST_F(StateMachineTest, AHandlersExceptionReachesTheWriterAndWhatEndedIsDestroyed) {
  machine = newMachine();
  insideLabel([this] {
    machine = nullptr;
    throwRangeException("the agent's own");
  });
  EXPECT_THROW(port->speedIs(1), RangeException);
  EXPECT_THAT(steps, ElementsAre("before", "end", "destroyed"));
  auto another = newMachine();
  port->speedIs(2);
  EXPECT_THAT(steps, ElementsAre("before", "end", "destroyed", "before", "after"));
}

}  // namespace
}  // namespace Vesk::Test
