#include "host/watch/PeerLoss.h"

#include "host/journal/PortJournal.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

class PeerLossOfAPort : public ::testing::Test {
 protected:
  void bringUp(OnPeerLoss policy) {
    for (Switch* one : {&a, &b}) {
      one->bringUp(configOf(policy));
    }
    talk(a, b, 20);
    ASSERT_TRUE(isOpen());
  }
  static SwitchConfig configOf(OnPeerLoss policy) {
    SwitchConfig config = configWith(kCak);
    config.interfaces[0].onPeerLoss = policy;
    return config;
  }
  /// Nobody at the other end any more.
  void alone(double until) {
    for (double time = a.world.time; time <= until; time += 0.25) {
      a.world.time = time;
      a.host.timerWheel()->runDue();
    }
    a.sent.frames.clear();
  }
  bool isOpen() const { return a.host.status()->cpStatus(kIntf)->controlledPortEnabled(); }
  bool isClosedForLoss() const {
    return a.host.peerLossInputDir()->forwardingModelInput(kIntf) != nullptr;
  }
  Switch b{2}, a{1, {.companion = PortJournal::of}};
};

TEST_F(PeerLossOfAPort, ClosesIfThatIsWantedAndOpensWithThePeer) {
  bringUp(OnPeerLoss::close);
  EXPECT_FALSE(isClosedForLoss());
  alone(23);
  EXPECT_FALSE(isClosedForLoss()) << "before the life time of the peer is over";
  alone(30);
  EXPECT_TRUE(isClosedForLoss());
  EXPECT_TRUE(isOpen()) << "the engine isn't concerned";
  EXPECT_EQ(a.world.logged("MACSECD_PORT_CLOSED"), 1u);
  talk(a, b, 40);
  EXPECT_FALSE(isClosedForLoss());
  EXPECT_EQ(a.world.logged("MACSECD_PORT_OPEN"), 2u);
}

TEST_F(PeerLossOfAPort, ChangesNothingIfThatIsWanted) {
  bringUp(OnPeerLoss::keep);
  alone(40);
  EXPECT_TRUE(isOpen());
  EXPECT_FALSE(isClosedForLoss());
}

TEST_F(PeerLossOfAPort, FollowsAChangeOfThePolicyAtOnce) {
  bringUp(OnPeerLoss::keep);
  alone(40);
  a.host.configIs(configOf(OnPeerLoss::close));
  EXPECT_TRUE(isClosedForLoss());
  a.host.configIs(configOf(OnPeerLoss::keep));
  EXPECT_FALSE(isClosedForLoss());
}

TEST_F(PeerLossOfAPort, LeavesNothingBehindOfAPortThatGoes) {
  bringUp(OnPeerLoss::close);
  alone(40);
  a.host.interfaceDel(kIntf);
  EXPECT_FALSE(isClosedForLoss());
}

TEST_F(PeerLossOfAPort, IsFoundByTheProcessThatFollows) {
  bringUp(OnPeerLoss::close);
  alone(40);
  a.host.restart();
  EXPECT_TRUE(isClosedForLoss());
}

}  // namespace
}  // namespace Macsecd
