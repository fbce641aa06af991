#include "lab/swarm/Swarm.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "lab/random/RandomScenario.h"
#include "lab/scenario/ScenarioParser.h"
#include "lab/swarm/HeldRun.h"
#include "tests/lab/Played.h"

namespace Lab {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::SizeIs;

HeldRun held(std::string const& text) {
  auto const read = parseScenario(text, "f");
  EXPECT_TRUE(read.good()) << Macsecd::textOf(read.diagnostics);
  return playHeld(read.scenario);
}

TEST(ARunOfTheSwarm, IsDrawnFromItsNumberAlone) {
  EXPECT_EQ(swarmScenario(7), swarmScenario(7));
  EXPECT_NE(swarmScenario(7), swarmScenario(8));
  for (uint32_t number = 0; number < 200; ++number) {
    auto const read = parseScenario(swarmScenario(number), "swarm");
    ASSERT_TRUE(read.good()) << number << ": " << Macsecd::textOf(read.diagnostics);
    EXPECT_TRUE(read.scenario.invariantsHold && read.scenario.faultsEnd && read.scenario.dataEvery);
  }
}

TEST(ARunOfTheSwarm, TellsWhatWasDoneAndInWhichStatesThePortsWere) {
  HeldRun const run = held(pair("seed 1\ndata every 0.5\nat 20 restart B\n"));
  EXPECT_THAT(run.breaches, IsEmpty());
  EXPECT_EQ(run.seconds, 30);
  EXPECT_THAT(run.acted, Contains(Key("restart")));
  EXPECT_THAT(run.states, Contains(HasSubstr("open, old")));
}

TEST(ARunOfTheSwarm, TellsOfAnInvariantThatIsBroken) {
  HeldRun const run = held(
      pair("seed 1\nport doctor off\nat 12 hardware of B has spent its key on Ethernet1\n", "90"));
  ASSERT_FALSE(run.breaches.empty());
  EXPECT_EQ(run.breaches.front().invariant, "secured-in-the-end");
}

TEST(TheSwarm, PlaysItsRunsInSeveralProcessesAndSumsThemUp) {
  std::ostringstream out;
  auto const keep = std::filesystem::path(testing::TempDir()) / "swarm";
  EXPECT_EQ(swarm({.runs = 6, .from = 1, .jobs = 3, .keep = keep.string()}, out), 0) << out.str();
  EXPECT_THAT(out.str(), HasSubstr("6 runs, 0.3 virtual hours"));
  EXPECT_TRUE(std::filesystem::is_empty(keep));
}

TEST(TheSwarm, EndsWhenItsTimeIsUp) {
  std::ostringstream out;
  SwarmOptions options{.runs = 1000, .keep = testing::TempDir()};
  options.isTimeUp = [] { return true; };
  EXPECT_EQ(swarm(options, out), 0);
  EXPECT_THAT(out.str(), HasSubstr("0 runs"));
}

// A key that is spent, and nobody to look after that, in each third run.
SwarmOptions failing(std::string const& folder) {
  SwarmOptions options{.runs = 6, .from = 1};
  options.keep = (std::filesystem::path(testing::TempDir()) / folder).string();
  options.draw = [](uint32_t number) {
    return pair(
        "title Run\nseed 1\ninvariants hold\nport doctor off\nat 20 clear counters of B\n" +
            std::string(number % 3 == 0 ? "at 12.4 hardware of B has spent its key on Ethernet1\n"
                                        : ""),
        "90");
  };
  std::filesystem::remove_all(options.keep);
  return options;
}

TEST(TheSwarm, ReducesARunThatFailsAndKeepsWhatIsLeft) {
  std::ostringstream out;
  SwarmOptions const options = failing("reduced");
  EXPECT_EQ(swarm(options, out), 1);
  EXPECT_THAT(out.str(), HasSubstr("FAILED  run 3: secured-in-the-end: "));
  EXPECT_THAT(out.str(), HasSubstr("FAILED  run 6: secured-in-the-end: "));
  EXPECT_THAT(out.str(), HasSubstr("6 runs, 0.1 virtual hours"));
  std::ifstream file(std::filesystem::path(options.keep) / "swarm-3.scenario");
  std::string const text((std::istreambuf_iterator<char>(file)), {});
  EXPECT_THAT(text, HasSubstr("at 12 hardware of B has spent its key on Ethernet1\n"));
  EXPECT_THAT(text, testing::Not(HasSubstr("clear counters")));
  EXPECT_FALSE(held(text).breaches.empty());
}

TEST(TheSwarm, DrawsWhatAProfileIsAboutAlone) {
  auto const drawn = [](FaultProfile profile) {
    std::string all;
    for (uint32_t number = 1; number <= 50; ++number) all += swarmScenario(number, profile);
    return all;
  };
  std::string const wires = drawn(FaultProfile::wires), processes = drawn(FaultProfile::processes);
  EXPECT_THAT(wires, testing::AllOf(HasSubstr(" lose "), testing::Not(HasSubstr(" kill "))));
  EXPECT_THAT(processes, testing::AllOf(HasSubstr(" kill "), testing::Not(HasSubstr(" lose "))));
  EXPECT_EQ(drawn(FaultProfile::all), drawn(FaultProfile::all));
}

TEST(TheSwarm, HoldsARunToTheInvariantsThatAreAskedForAlone) {
  std::ostringstream out;
  SwarmOptions options = failing("asked");
  options.invariants = {"nonces-once", "ends-agree"};
  EXPECT_EQ(swarm(options, out), 0);
  options.invariants.push_back("secured-in-the-end");
  EXPECT_EQ(swarm(options, out), 1);
}

TEST(TheSwarm, EndsWithTheFirstFailureIfItIsToldTo) {
  std::ostringstream out;
  SwarmOptions options = failing("first");
  options.untilFailure = true;
  EXPECT_EQ(swarm(options, out), 1);
  EXPECT_THAT(out.str(), HasSubstr("3 runs, 0.1 virtual hours, "));
  EXPECT_THAT(out.str(), testing::Not(HasSubstr("run 6")));
}

}  // namespace
}  // namespace Lab
