#include <gmock/gmock.h>

#include <algorithm>
#include <iostream>

#include "KillDemands.h"

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

struct Outcome {
  bool wasKilled;
  std::vector<std::string> failures;
};

Outcome playedWithDeath(Scenario const& scenario, MemoryStore::Death death) {
  Simulation simulation(scenario, 1);
  KillDemands demands(simulation, death);
  simulation.run();
  demands.atTheEnd();
  return {demands.wasKilled(), demands.failures()};
}

// Every commit of the road in turn, until the process outlives the road.
void killEverywhere(std::string const& text, bool taken) {
  auto const result = parseScenario(text, "road");
  ASSERT_TRUE(result.good()) << Macsecd::textOf(result.mistakes);
  size_t commit = 1;
  for (;; ++commit) {
    Outcome const outcome = playedWithDeath(result.scenario, {commit, taken});
    EXPECT_THAT(outcome.failures, IsEmpty()) << "at commit " << commit;
    if (!outcome.wasKilled) break;
  }
  testing::Test::RecordProperty("killPoints", static_cast<int>(commit - 1));
  std::cout << "[          ] " << commit - 1 << " kill points\n";
  EXPECT_GT(commit, 50u);
}

// The key server has the lower priority.
Side const kServer{10}, kOther{20};

// The period begins anew with each process, so the end stands clear of all rekeys.
std::string startAndRekey(Side const& a, Side const& b) {
  return road(a, b, 20,
              "run until 60\nat 48 set rekey period of profile core on A to 0\n"
              "at 48 set rekey period of profile core on B to 0\n");
}

// B begins with another primary key, so that both fall back, and gets the right one.
std::string fallBackAndReturn(Side const& a, Side b) {
  b.primary = kWrong;
  return road(a, b, 0, "run until 75\nat 50 set key of profile core on B to ab " + kPrimary + "\n");
}

TEST(KilledSwitch, GoesOnUnnoticedFromStartToRekeyAsKeyServer) {
  killEverywhere(startAndRekey(kServer, kOther), true);
}
TEST(KilledSwitch, GoesOnUnnoticedFromStartToRekeyAsTheOther) {
  killEverywhere(startAndRekey(kOther, kServer), true);
}
TEST(KilledSwitch, GoesOnUnnoticedThroughFallBackAndReturnAsKeyServer) {
  killEverywhere(fallBackAndReturn(kServer, kOther), true);
}
TEST(KilledSwitch, GoesOnUnnoticedThroughFallBackAndReturnAsTheOther) {
  killEverywhere(fallBackAndReturn(kOther, kServer), true);
}

}  // namespace
}  // namespace Lab
