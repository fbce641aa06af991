#include "linux/process/LoopDelay.h"

#include <gtest/gtest.h>

#include <limits>

namespace Linux {
namespace {

TEST(LoopDelay, CountsDelaysByTheirBounds) {
  LoopDelay delay;
  for (double const late : {-0.1, 0.0005, 0.001, 0.05, 0.5, 5.0, 50.0}) delay.ran(100, 100 + late);
  // What is as long as a bound, but for what rounding leaves of it, may stand on either side.
  EXPECT_EQ(delay.counts()[0] + delay.counts()[1], 3u);
  EXPECT_EQ(delay.counts()[2], 1u);
  EXPECT_EQ(delay.counts()[3], 1u);
  EXPECT_EQ(delay.counts()[4], 1u);
  EXPECT_EQ(delay.counts()[5], 1u);
  EXPECT_NEAR(delay.sum(), 55.5515, 1e-6);
  EXPECT_EQ(delay.last(), 50.0);
}

TEST(LoopDelay, CallsALoopFrozenThatIsLateByMoreThanASecond) {
  LoopDelay delay;
  delay.ran(100, 101);
  EXPECT_EQ(delay.frozen(), 0u);
  delay.ran(100, 101.5);
  EXPECT_EQ(delay.frozen(), 1u);
}

TEST(LoopDelay, DoesNotCountWhatWasNotDue) {
  LoopDelay delay;
  delay.ran(std::numeric_limits<double>::infinity(), 5);
  EXPECT_EQ(delay.counts(), LoopDelay().counts());
  EXPECT_EQ(delay.sum(), 0.0);
}

}  // namespace
}  // namespace Linux
