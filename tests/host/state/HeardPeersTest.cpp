#include "host/state/HeardPeers.h"

#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

class ASwitchThatWasAway : public ::testing::Test {
 protected:
  ASwitchThatWasAway() {
    for (Switch* one : {&a, &b}) one->bringUp();
    talk(a, b, 20);
  }
  void awayFor(double seconds) {
    b.host.die();
    b.world.time += seconds;
    b.host.start();
    b.host.timerWheel()->runDue();
  }
  Switch a{1}, b{2};  // a is the key server
};

TEST_F(ASwitchThatWasAway, HoldsThePeerForLiveThatItCouldNotHear) {
  awayFor(8);
  EXPECT_EQ(b.actor()->livePeer().members(), 1u);
  EXPECT_TRUE(b.actor()->principal());
}

TEST_F(ASwitchThatWasAway, LosesAPeerThatDoesNotComeWithinALifeTime) {
  awayFor(8);
  b.world.time += 7;
  b.host.timerWheel()->runDue();
  EXPECT_EQ(b.actor()->livePeer().members(), 0u);
}

TEST_F(ASwitchThatWasAway, LosesAPeerAtOnceThatHasTakenItForLost) {
  awayFor(14);
  EXPECT_EQ(b.actor()->livePeer().members(), 0u);
  EXPECT_FALSE(b.actor()->principal());
}

// A clock that was set back, or a record that lies.
TEST_F(ASwitchThatWasAway, LeavesATimeToComeAsItIs) {
  {
    Vesk::WorldScope const scope(b.world);
    b.actor()->livePeer().begin()->timeStampIs(1000);
  }
  awayFor(1);
  EXPECT_EQ(b.actor()->livePeer().begin()->timeStamp(), 1000);
}

}  // namespace
}  // namespace Macsecd
