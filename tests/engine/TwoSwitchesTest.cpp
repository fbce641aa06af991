#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/KeyNames.h"
#include "tests/support/Switch.h"

namespace Macsec {
namespace {

using Support::kCkn;
using ::testing::ElementsAre;

class TwoSwitches : public ::testing::Test {
 protected:
  TwoSwitches() {
    a.world.delays = {0};
    b.world.delays = {1};
    a.start(Support::key(kCkn), Cak(), 10);
    b.start(Support::key(kCkn), Cak(), 20);
  }

  Support::Switch a{1};
  Support::Switch b{2};
  Support::Segment segment{{&a, &b}};
};

TEST_F(TwoSwitches, AgreeOnAKeyAtTheTimesThatThePeriodsGive) {
  segment.runUntil(1.0009);
  EXPECT_FALSE(a.actor(kCkn)->success());
  segment.runUntil(1.001);
  EXPECT_TRUE(a.actor(kCkn)->success());
  EXPECT_FALSE(b.actor(kCkn)->success());
  segment.runUntil(2.001);
  EXPECT_TRUE(b.actor(kCkn)->success());
  segment.runUntil(7.0009);
  EXPECT_EQ(a.world.logged("MKA_SAK_CREATED"), 0u);
  segment.runUntil(7.001);
  EXPECT_EQ(a.world.logged("MKA_SAK_CREATED"), 1u);
  EXPECT_TRUE(a.cpStatus()->controlledPortEnabled());
  EXPECT_FALSE(b.cpStatus()->controlledPortEnabled());
  segment.runUntil(8.001);
  EXPECT_TRUE(b.actor(kCkn)->principal());
  EXPECT_TRUE(b.cpStatus()->controlledPortEnabled());
  EXPECT_FALSE(a.actor(kCkn)->sakTransmit());
  segment.runUntil(9.001);
  EXPECT_TRUE(a.actor(kCkn)->sakTransmit());
  EXPECT_EQ(a.cpStatus()->txSak(), b.cpStatus()->txSak());
  EXPECT_THAT(a.world.logNames(),
              ElementsAre("MKA_CA_CREATED", "MKA_SESSION_ESTABLISHED", "MKA_STATE_CHG",
                          "MKA_KEY_IN_USE", "MKA_SAK_CREATED", "MKA_SAK_ACTIVATED"));
}

}  // namespace
}  // namespace Macsec
