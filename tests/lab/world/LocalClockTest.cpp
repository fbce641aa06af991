#include "lab/world/LocalClock.h"

#include <gtest/gtest.h>

#include "tests/lab/Played.h"

namespace Lab {
namespace {

TEST(LocalClock, ShowsTheTimeOfTheSimulationUntilItsRateChanges) {
  LocalClock const clock;
  EXPECT_EQ(clock.shown(7.001), 7.001);
  EXPECT_EQ(clock.whenShown(7.001), 7.001);
  EXPECT_EQ(clock.whenShown(kNever), kNever);
}

TEST(LocalClock, GoesOnFromWhatItShowsAtAnotherRate) {
  LocalClock clock;
  clock.rateIs(10, 1.5);
  EXPECT_EQ(clock.shown(10), 10);
  EXPECT_EQ(clock.shown(12), 13);
  clock.rateIs(12, 0.5);
  EXPECT_EQ(clock.shown(14), 14);
  EXPECT_EQ(clock.whenShown(14), 14);
}

TEST(LocalClock, HasShownWhatIsDueWhenItIsDue) {
  LocalClock clock;
  clock.rateIs(1.0 / 3, 1.03);
  for (int i = 1; i < 10000; ++i) {
    double const due = i * 0.1;
    EXPECT_GE(clock.shown(clock.whenShown(due)), due);
    EXPECT_NEAR(clock.shown(clock.whenShown(due)), due, 1e-9);
  }
}

// At 130.5280001 a frame was due, and neither then nor later.
TEST(Clock, HasOneMindOfWhatBelongsToAnInstant) {
  double const now = 130.52799999999999, next = 130.52800009999999;
  ASSERT_TRUE(sameInstant(now, next));
  EXPECT_TRUE(notAfter(next, now));
  EXPECT_FALSE(notAfter(kNever, now));
}

double sentBy(Played const& played) {
  auto const frames = played.all<FramePassed>("A");
  return static_cast<double>(std::ranges::count(frames, Macsecd::FrameWay::out, &FramePassed::way));
}

TEST(ASwitch, WhoseClockRunsFastOrSlowSendsMoreOrFewerFrames) {
  double const sent = sentBy(Played(pair("")));
  EXPECT_EQ(sent, 16);
  EXPECT_NEAR(sentBy(Played(pair("at 0 clock of A runs 50 percent fast\n"))), 1.5 * sent, 1);
  EXPECT_NEAR(sentBy(Played(pair("at 0 clock of A runs 50 percent slow\n"))), 0.5 * sent, 1);
}

}  // namespace
}  // namespace Lab
