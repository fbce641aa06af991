#include "lab/world/SwitchWorld.h"

#include <gtest/gtest.h>

#include <array>

#include "lab/scenario/ScenarioParser.h"
#include "tests/lab/Scene.h"

namespace Lab {
namespace {

TEST(SwitchWorld, GivesTheFirstDelaysAndThenWhatTheSeedDecides) {
  Clock clock;
  SwitchWorld a(clock, 1, 0, {5, 0}), b(clock, 1, 0, {}), c(clock, 2, 0, {}), d(clock, 1, 1, {});
  EXPECT_EQ(a.rand(), 5);
  EXPECT_EQ(a.rand(), 0);
  int const third = a.rand();
  EXPECT_GE(third, 0);
  EXPECT_EQ(third, b.rand());
  EXPECT_NE(third, c.rand());
  EXPECT_NE(third, d.rand());
}

TEST(SwitchWorld, DrawsKeysFromAStreamOfTheirOwn) {
  Clock clock;
  SwitchWorld a(clock, 1, 0, {}), b(clock, 1, 0, {});
  std::array<uint8_t, 32> keyA{}, keyB{};
  a.rand();
  a.randomBytes(keyA);
  b.randomBytes(keyB);
  EXPECT_EQ(keyA, keyB);
  b.randomBytes(keyB);
  EXPECT_NE(keyA, keyB);
}

TEST(SwitchWorld, ShowsTheTimeOfItsSimulationAndUnwindsOnExit) {
  Clock clock;
  SwitchWorld world(clock, 1, 0, {});
  clock.now = 7.001;
  EXPECT_EQ(world.now(), 7.001);
  try {
    world.exit(3);
    FAIL();
  } catch (SwitchExit const& exit) {
    EXPECT_EQ(exit.status, 3);
  }
}

TEST(Clock, WritesTimesWithThreeDecimalsOrMore) {
  EXPECT_EQ(timeText(0), "0.000");
  EXPECT_EQ(timeText(7.001), "7.001");
  EXPECT_EQ(timeText(7.0012), "7.0012");
  EXPECT_EQ(timeText(1.0 + 6.001), "7.001");
  EXPECT_TRUE(sameInstant(0.1 + 0.2, 0.3));
  EXPECT_FALSE(sameInstant(0.3, 0.300001));
}

TEST(ScenarioSettings, KeepTheTitleAsItIsWrittenAndTheFormOfTheIcvIndicator) {
  auto read = [](std::string const& lines) { return parseScenario(scene(lines), "f").scenario; };
  EXPECT_EQ(read("title One, two,  three ").title, "One, two,  three");
  EXPECT_EQ(read("").icvIndicator, Codec::IcvIndicator::length16);
  EXPECT_EQ(read("icv indicator of 4").icvIndicator, Codec::IcvIndicator::length4);
  EXPECT_EQ(read("icv indicator left out").icvIndicator, Codec::IcvIndicator::leftOut);
  EXPECT_EQ(complaintsIn("icv indicator of 5").size(), 1u);
}

TEST(ScenarioSettings, SwitchThePortDoctorOff) {
  auto treated = [](std::string const& lines) {
    return parseScenario(scene(lines), "f").scenario.treatedTroubles;
  };
  EXPECT_EQ(treated(""), Macsecd::allPortTroubles());
  EXPECT_EQ(treated("port doctor on"), Macsecd::allPortTroubles());
  EXPECT_TRUE(treated("port doctor off").empty());
}

}  // namespace
}  // namespace Lab
