#include "host/watch/Backoff.h"

#include <gtest/gtest.h>

namespace Macsecd {
namespace {

TEST(Backoff, WaitsTwiceAsLongEachTimeUpToTheMost) {
  Backoff backoff(1, 60);
  for (double const wait : {1, 2, 4, 8, 16, 32, 60, 60}) EXPECT_EQ(backoff.next(), wait);
}

TEST(Backoff, BeginsAgainWhenAllIsWell) {
  Backoff backoff(1, 60);
  EXPECT_FALSE(backoff.isRunning());
  backoff.next();
  backoff.next();
  EXPECT_TRUE(backoff.isRunning());
  backoff.reset();
  EXPECT_FALSE(backoff.isRunning());
  EXPECT_EQ(backoff.next(), 1);
}

TEST(Backoff, NeverWaitsLongerThanTheMost) {
  EXPECT_EQ(Backoff(10, 5).next(), 5);
  EXPECT_EQ(Backoff(12, 3600).waitAfter(2), 48);
  EXPECT_EQ(Backoff(12, 3600).waitAfter(100'000), 3600);
}

}  // namespace
}  // namespace Macsecd
