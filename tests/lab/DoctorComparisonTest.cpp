#include "lab/DoctorComparison.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "lab/judge/SecuredTime.h"
#include "lab/random/RandomScenario.h"
#include "tests/lab/Played.h"

namespace Lab {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

double securedSeconds(std::string const& text) {
  auto const read = parseScenario(text, "f");
  EXPECT_TRUE(read.good()) << Macsecd::textOf(read.diagnostics);
  Simulation simulation(read.scenario, 1);
  SecuredTime secured(simulation);
  simulation.audienceIs(secured);
  simulation.run();
  return secured.seconds();
}

TEST(RandomScenario, IsReadableAndHasFaultsOfEveryKindOverManySeeds) {
  std::set<size_t> kinds;
  for (uint32_t seed = 1; seed <= 400; ++seed) {
    auto const read = parseScenario(randomScenario(seed), "random");
    ASSERT_THAT(read.diagnostics, IsEmpty()) << seed << "\n" << randomScenario(seed);
    for (Action const& action : read.scenario.actions) kinds.insert(action.what.index());
  }
  // All but the change of a profile, a reload, the clearing of counters, and a mark; and what
  // happens in swarms alone.
  EXPECT_EQ(kinds.size(), std::variant_size_v<decltype(Action::what)> - 9);
}

TEST(RandomScenario, IsDecidedByItsSeed) {
  EXPECT_EQ(randomScenario(7), randomScenario(7));
  EXPECT_NE(randomScenario(7), randomScenario(8));
}

// B opens at 8.001, and traffic passes from then on.
TEST(SecuredTime, IsThatOfBothPortsWhileTrafficPassesBothWays) {
  EXPECT_NEAR(securedSeconds(pair("", "30")), 2 * (30 - 8.001), 0.01);
  EXPECT_NEAR(securedSeconds(pair("at 20 link down on A Ethernet1", "30")), 2 * (20 - 8.001), 0.01);
  EXPECT_EQ(securedSeconds(pair("at 0 hardware of A is silent", "30")), 0);
}

#ifdef __SANITIZE_ADDRESS__
constexpr uint32_t kSwarm = 10;  // each costs twenty times as much there
#else
constexpr uint32_t kSwarm = 150;
#endif

// What is secured with the doctor isn't less than without it. The command compares thousands.
TEST(DoctorComparison, FindsNoHarmInASmallSwarm) {
  std::ostringstream out;
  EXPECT_EQ(compareDoctor({.scenarios = kSwarm, .seed = 1}, out), 0) << out.str();
}

TEST(DoctorComparison, IsTheSameTextForTheSameSeed) {
  auto const told = [](bool json) {
    std::ostringstream out;
    compareDoctor({.scenarios = 3, .seed = 5, .json = json}, out);
    return out.str();
  };
  EXPECT_EQ(told(false), told(false));
  EXPECT_THAT(told(false), HasSubstr("3 random scenarios from seed 5"));
  EXPECT_THAT(told(true), HasSubstr("\"secured-without\""));
}

TEST(Benefit, PassesIfAsMuchIsSecuredAsWithout) {
  Benefit benefit;
  EXPECT_TRUE(benefit.passes());
  benefit.add(10, 12);
  EXPECT_FALSE(benefit.passes());
  benefit.add(10, 8);
  benefit.add(5, 5);
  EXPECT_TRUE(benefit.passes());
  EXPECT_EQ(benefit.acted, 3u);
  EXPECT_EQ(benefit.better, 1u);
  EXPECT_EQ(benefit.worse, 1u);
}

}  // namespace
}  // namespace Lab
