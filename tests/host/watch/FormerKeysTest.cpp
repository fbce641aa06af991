#include "host/watch/FormerKeys.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/TestWorld.h"

namespace Macsecd {
namespace {

using Macsec::AssociationNumber;

constexpr double kNever = std::numeric_limits<double>::infinity();

class TheFormerKeys : public ::testing::Test {
 protected:
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  FormerKeys keys;
  AssociationNumber const one{1}, two{2};
};

TEST_F(TheFormerKeys, StayForALifeTimeAfterTheyWereWithdrawn) {
  keys.isAsked(one);
  EXPECT_EQ(keys.nextTime(), kNever);
  world.time = 10;
  EXPECT_TRUE(keys.stays(one, false));
  EXPECT_EQ(keys.nextTime(), 16);
  world.time = 15.9;
  EXPECT_TRUE(keys.stays(one, false));
  world.time = 16;
  EXPECT_FALSE(keys.stays(one, false));
  EXPECT_EQ(keys.nextTime(), kNever);
}

TEST_F(TheFormerKeys, StayForTwoSecondsUnderDelayProtection) {
  keys.isAsked(one);
  EXPECT_TRUE(keys.stays(one, true));
  EXPECT_EQ(keys.nextTime(), 2);
  world.time = 2;
  EXPECT_FALSE(keys.stays(one, true));
}

TEST_F(TheFormerKeys, DoNotStayIfNobodyAskedForThem) { EXPECT_FALSE(keys.stays(one, false)); }

TEST_F(TheFormerKeys, StayIfAFormerProcessHasLeftThem) {
  keys.isFound(one);
  world.time = 3;
  EXPECT_TRUE(keys.stays(one, false));
  keys.isFound(one);
  EXPECT_EQ(keys.nextTime(), 9);
}

TEST_F(TheFormerKeys, DoNotStayOnceTheyHaveGone) {
  keys.isAsked(one);
  EXPECT_TRUE(keys.stays(one, false));
  keys.forget(one);
  EXPECT_FALSE(keys.stays(one, false));
  EXPECT_EQ(keys.nextTime(), kNever);
}

TEST_F(TheFormerKeys, StayForAsLongAgainWhenTheyWereAskedForInBetween) {
  keys.isAsked(one);
  EXPECT_TRUE(keys.stays(one, false));
  world.time = 5;
  keys.isAsked(one);
  EXPECT_EQ(keys.nextTime(), kNever);
  EXPECT_TRUE(keys.stays(one, false));
  EXPECT_EQ(keys.nextTime(), 11);
}

TEST_F(TheFormerKeys, GoOneByOne) {
  keys.isAsked(one);
  keys.isAsked(two);
  EXPECT_TRUE(keys.stays(one, false));
  world.time = 4;
  EXPECT_TRUE(keys.stays(two, false));
  EXPECT_EQ(keys.nextTime(), 6);
  world.time = 7;
  EXPECT_FALSE(keys.stays(one, false));
  EXPECT_TRUE(keys.stays(two, false));
  EXPECT_EQ(keys.nextTime(), 10);
}

}  // namespace
}  // namespace Macsecd
