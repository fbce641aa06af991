#include "host/watch/StageTrace.h"

#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

using ::testing::ElementsAre;

/// Two switches, and the steps that one of them traces.
class TheTraceOfStages : public ::testing::Test {
 protected:
  TheTraceOfStages() {
    for (Switch* one : {&a, &b}) {
      Vesk::WorldScope const scope(one->world);
      Vesk::TraceHandle::streamLevelsIs("Macsecd::StageTrace", 1 << 2);
      one->bringUp();
    }
    talk(a, b, 20);
  }
  ~TheTraceOfStages() override {
    Vesk::WorldScope const scope(a.world);
    Vesk::TraceHandle::streamLevelsIs("Macsecd::StageTrace", 0);
  }

  /// What stands behind `begin` in the traces of a switch.
  static std::vector<std::string> steps(Switch const& of, std::string const& begin) {
    std::vector<std::string> found;
    for (std::string const& trace : of.world.traces) {
      auto const at = trace.find(begin);
      if (at != std::string::npos) found.push_back(trace.substr(at + begin.size()));
    }
    return found;
  }
  static std::string stepsOf(Switch const& member) {
    std::string const id(member.actor()->msgId().view());
    return ": Member " + id + " of actor 6162 on Ethernet1: ";
  }

  Switch b{2}, a{1};
};

TEST_F(TheTraceOfStages, FollowsAKeyOnItsWay) {
  EXPECT_THAT(steps(a, ": Key on Ethernet1: "),
              ElementsAre("none -> Empty", "Empty -> RxProgrammed", "RxProgrammed -> RxUp",
                          "RxUp -> TxProgrammed", "TxProgrammed -> TxUp", "TxUp -> Old"));
}

TEST_F(TheTraceOfStages, FollowsAMemberUntilItIsForgotten) {
  EXPECT_THAT(steps(b, stepsOf(a)), ElementsAre("Unknown -> Potential", "Potential -> Live"))
      << "heard before it had heard of this end";
  EXPECT_THAT(steps(a, stepsOf(b)), ElementsAre("Unknown -> Live"));
  Vesk::WorldScope const scope(a.world);
  for (double const end = a.world.time + 10; a.world.time < end; a.world.time += 0.5) {
    a.host.timerWheel()->runDue();
  }
  EXPECT_EQ(steps(a, stepsOf(b)).back(), "Live -> Unknown");
}

TEST_F(TheTraceOfStages, TellsOfTheGuardOnNewKeys) {
  EXPECT_EQ(steps(a, ": Guard on Ethernet1: ").front(), "none -> Guard disarmed");
}

}  // namespace
}  // namespace Macsecd
