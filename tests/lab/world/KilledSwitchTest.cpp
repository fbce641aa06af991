#include <gmock/gmock.h>

#include <iostream>
#include <optional>

#include "tests/lab/KillDemands.h"
#include "tests/support/Thinned.h"

// A switch that is killed at every single commit along the road of a key, and started again from
// its store alone. The hardware keeps what it has.

namespace Lab {
namespace {

using testing::IsEmpty;

std::string const kPrimary = "00112233445566778899aabbccddeeff";
std::string const kWrong = "ffeeddccbbaa99887766554433221100";
std::string const kFallback = "fedcba9876543210fedcba9876543210";

struct Side {
  int priority;
  std::string primary = kPrimary;
};

// Two switches with a primary and a fallback key and fixed delays.
std::string road(Side const& a, Side const& b, int rekeyPeriod, std::string const& lines) {
  auto sw = [&](std::string const& name, std::string const& number, Side const& side) {
    return "switch " + name + "\n  mac 02:00:00:00:00:0" + number + "\n  first delays " + number +
           " " + number +
           "\n  config:\n    profiles:\n      core:\n        key: {ckn: ab, cak: " + side.primary +
           "}\n        fallback-key: {ckn: fa11, cak: " + kFallback +
           "}\n        key-server-priority: " + std::to_string(side.priority) +
           "\n        rekey-period: " + std::to_string(rekeyPeriod) +
           "\n    interfaces:\n      Ethernet1: {profile: core}\n";
  };
  return sw("A", "1", a) + sw("B", "2", b) + "wire A Ethernet1 to B Ethernet1\n" + lines;
}

struct Road {
  std::string text;
  double lastKill;  // the rest of the road is there to come to rest
};

// The time of the kill, if there was one, after the demands were checked.
std::optional<double> playWithDeath(Scenario const& scenario, MemoryStore::Death death,
                                    double deadFor) {
  Simulation simulation(scenario, 1);
  KillDemands demands(simulation, death, deadFor);
  simulation.run();
  demands.atTheEnd();
  EXPECT_THAT(demands.failures(), IsEmpty())
      << "at commit " << death.commit << " at " << demands.killedAt().value_or(0);
  return demands.killedAt();
}

// Every commit of the road in turn; under the sanitizers some of them.
void killEverywhere(Road const& road, bool taken = true, double deadFor = 0) {
  auto const result = parseScenario(road.text, "road");
  ASSERT_TRUE(result.good()) << Macsecd::textOf(result.diagnostics);
  size_t commit = 1;
  std::optional<double> killed;
  for (;; commit += Support::kEach) {
    killed = playWithDeath(result.scenario, {commit, taken}, deadFor);
    if (!killed || *killed >= road.lastKill) break;
  }
  EXPECT_TRUE(killed) << "the road has to outlast the kills";
  testing::Test::RecordProperty("killPoints", static_cast<int>(commit));
  std::cout << "[          ] " << commit << " kill points\n";
  EXPECT_GT(commit, 80u);
}

// The key server has the lower priority.
Side const kServer{10}, kOther{20};

// The period begins anew with each process: the last rekey ends before the road does.
Road startAndRekey(Side const& a, Side const& b) {
  return {road(a, b, 20,
               "run until 65\nat 48 set rekey period of profile core on A to 0\n"
               "at 48 set rekey period of profile core on B to 0\n"),
          48};
}

// B begins with another primary key, so that both fall back, and gets the right one before the
// doctor of a port would take somebody for stuck who was killed while the fallback key waited.
Road fallBackAndReturn(Side const& a, Side b) {
  b.primary = kWrong;
  return {
      road(a, b, 0, "run until 85\nat 41 set key of profile core on B to ab " + kPrimary + "\n"),
      68};
}

TEST(KilledSwitch, GoesOnUnnoticedFromStartToRekeyAsKeyServer) {
  killEverywhere(startAndRekey(kServer, kOther));
}
TEST(KilledSwitch, GoesOnUnnoticedFromStartToRekeyAsTheOther) {
  killEverywhere(startAndRekey(kOther, kServer));
}
TEST(KilledSwitch, GoesOnUnnoticedThroughFallBackAndReturnAsKeyServer) {
  killEverywhere(fallBackAndReturn(kServer, kOther));
}
TEST(KilledSwitch, GoesOnUnnoticedThroughFallBackAndReturnAsTheOther) {
  killEverywhere(fallBackAndReturn(kOther, kServer));
}

// The next process takes a while, well within the life time of its peers.
TEST(KilledSwitch, GoesOnUnnoticedAsKeyServerWhenItWasDeadForAWhile) {
  killEverywhere(startAndRekey(kServer, kOther), true, 2);
}
TEST(KilledSwitch, GoesOnUnnoticedAsTheOtherWhenItWasDeadForAWhile) {
  killEverywhere(startAndRekey(kOther, kServer), true, 2);
}

// What the turn has done outside stands, and the store has heard nothing of it.
TEST(KilledSwitch, GoesOnUnnoticedAsKeyServerWhenItsLastTurnIsLost) {
  killEverywhere(startAndRekey(kServer, kOther), false);
  killEverywhere(fallBackAndReturn(kServer, kOther), false);
}
TEST(KilledSwitch, GoesOnUnnoticedAsTheOtherWhenItsLastTurnIsLost) {
  killEverywhere(startAndRekey(kOther, kServer), false);
  killEverywhere(fallBackAndReturn(kOther, kServer), false);
}

}  // namespace
}  // namespace Lab
