#include "host/watch/TransmitHold.h"

#include "host/explain/Explain.h"
#include "host/state/SsciNumber.h"
#include "tests/host/HostFixture.h"

namespace Macsecd {
namespace {

using Reason = TransmitHold::Reason;

class TheTransmitHold : public ::testing::Test {
 protected:
  TheTransmitHold() {
    for (Switch* one : {&a, &b}) {
      one->bringUp();
    }
    talk(a, b, 20);
  }
  /// Another live peer, of which the switch hears nothing more.
  void thirdIs(Switch& one) {
    Vesk::WorldScope const scope(one.world);
    auto const peer = one.actor()->livePeerIs("c1c2c3c4c5c6c7c8c9cacbcc");
    Macsec::BasicInfo info;
    info.sciIs({Lumo::EthAddr({2, 0, 0, 0, 0, 3}), 1});
    peer->baseInfoIs(info);
    peer->timeStampIs(one.world.time);
  }
  SakId txSak(Switch const& one) const {
    return *SakId::of(one.host.status()->cpStatus(kIntf)->txSak());
  }
  uint32_t ssci(Switch const& one) const {
    return *ssciNumber(one.host.status()->cpStatus(kIntf)->mySsci());
  }
  /// To be received with, as when it has just been distributed.
  SakId nextKeyIsAskedFor(Switch& one) {
    auto const cp = one.host.status()->cpStatus(kIntf);
    Macsec::Sak next = cp->txSak();
    next.anIs(Macsec::AssociationNumber(3));
    next.keyNumIs(next.keyNum() + 1);
    Vesk::WorldScope const scope(one.world);
    cp->rxSakIs(next);
    return *SakId::of(next);
  }
  bool isHeld(Switch const& one) const {
    return one.host.transmitHoldInputDir()->forwardingModelInput(kIntf) != nullptr;
  }
  Switch b{2}, a{1};  // a is the key server
};

TEST_F(TheTransmitHold, LeavesALinkOfTwoAlone) {
  EXPECT_TRUE(a.host.isOpen(kIntf));
  EXPECT_FALSE(isHeld(a));
  EXPECT_EQ(a.host.transmitHold(kIntf), Reason::none);
  EXPECT_EQ(a.world.logged("MACSECD_SENDS_AGAIN"), 0u);
}

TEST_F(TheTransmitHold, ClosesThePortWhileThereAreMoreThanTwoMembersAndSpendsItsKeys) {
  SakId const key = txSak(a);
  thirdIs(a);
  EXPECT_EQ(a.host.transmitHold(kIntf), Reason::tooManyMembers);
  EXPECT_TRUE(isHeld(a));
  EXPECT_FALSE(a.host.isOpen(kIntf));
  EXPECT_TRUE(a.host.keyHistory().isSpent(kIntf, key));
  EXPECT_EQ(explain(a.host, kIntf).causes.at(0).kind, CauseKind::tooManyMembers);
  EXPECT_FALSE(explain(a.host, kIntf).secured);
  EXPECT_EQ(a.world.logged("MACSECD_TOO_MANY_MEMBERS"), 1u);
}

TEST_F(TheTransmitHold, OpensThePortWithANewKeyWhenTheThirdMemberHasGone) {
  SakId const key = txSak(a);
  thirdIs(a);
  talk(a, b, 26);
  EXPECT_FALSE(a.host.isOpen(kIntf));
  talk(a, b, 50);
  EXPECT_TRUE(a.host.isOpen(kIntf));
  EXPECT_NE(txSak(a), key);
  EXPECT_EQ(txSak(a), txSak(b));
  EXPECT_EQ(a.world.logged("MACSECD_TOO_MANY_MEMBERS"), 1u);
  EXPECT_EQ(a.world.logged("MACSECD_SENDS_AGAIN"), 1u);
  EXPECT_EQ(a.host.doctorCounts()->boundAnew, 0u);
}

TEST_F(TheTransmitHold, OfAFollowerSpendsOnlyWhatIsAskedForToBeSentWith) {
  SakId const key = txSak(b), next = nextKeyIsAskedFor(b);
  thirdIs(b);
  EXPECT_TRUE(b.host.keyHistory().isSpent(kIntf, key));
  EXPECT_FALSE(b.host.keyHistory().isSpent(kIntf, next));
}

TEST_F(TheTransmitHold, BindsAKeyToTheSsciUnderWhichItIsAskedFor) {
  SakId const next = nextKeyIsAskedFor(b);
  EXPECT_EQ(b.host.keyHistory().firstToSend(kIntf, next, ssci(b)), 1u);
  EXPECT_EQ(b.host.keyHistory().firstToSend(kIntf, next, ssci(a)), std::nullopt);
}

TEST_F(TheTransmitHold, BindsTheKeyThatComesAfterASpentOneAsWell) {
  b.host.keyIsSpent(kIntf, txSak(b));
  ASSERT_EQ(b.host.transmitHold(kIntf), Reason::spentKey);
  SakId const next = nextKeyIsAskedFor(b);
  EXPECT_EQ(b.host.keyHistory().firstToSend(kIntf, next, ssci(a)), std::nullopt);
}

TEST_F(TheTransmitHold, MakesANewKeyAsKeyServerWhenTheHardwareCantSendWithThePresentOne) {
  SakId const key = txSak(a);
  a.host.keyIsSpent(kIntf, key);
  EXPECT_EQ(a.host.transmitHold(kIntf), Reason::spentKey);
  EXPECT_FALSE(a.host.isOpen(kIntf));
  talk(a, b, 30);
  EXPECT_TRUE(a.host.isOpen(kIntf));
  EXPECT_NE(txSak(a), key);
  EXPECT_EQ(a.world.logged("MACSECD_KEY_SPENT"), 1u);
}

TEST_F(TheTransmitHold, HasAFollowerComeBackAsANewMemberWhenItsKeyServerGivesNoOtherKey) {
  SakId const key = txSak(b);
  b.host.keyIsSpent(kIntf, key);
  EXPECT_FALSE(b.host.isOpen(kIntf));
  talk(a, b, 60);
  EXPECT_TRUE(b.host.isOpen(kIntf));
  EXPECT_NE(txSak(b), key);
  EXPECT_EQ(b.host.doctorCounts()->boundAnew, 1u);
}

TEST_F(TheTransmitHold, ClosesAPortWhosePeerHasAnotherSciThanItsSscisAreFor) {
  Vesk::WorldScope const scope(b.world);
  b.host.status()->cpStatus(kIntf)->peerSsciIs(
      {{Lumo::EthAddr({2, 0, 0, 0, 0, 9}), 1}, "00000001"});
  b.host.status()->cpStatus(kIntf)->controlledPortEnabledIs(false);
  b.host.status()->cpStatus(kIntf)->controlledPortEnabledIs(true);
  EXPECT_EQ(b.host.transmitHold(kIntf), Reason::otherPeer);
  EXPECT_FALSE(b.host.isOpen(kIntf));
  EXPECT_TRUE(explain(b.host, kIntf).has(CauseKind::otherPeer));
}

TEST_F(TheTransmitHold, LooksAgainWhenTheSscisAreForAnotherPeer) {
  Vesk::WorldScope const scope(b.world);
  auto const cp = b.host.status()->cpStatus(kIntf);
  Macsec::Ssci const own = cp->peerSsci();
  cp->peerSsciIs({{Lumo::EthAddr({2, 0, 0, 0, 0, 9}), 1}, "00000001"});
  EXPECT_EQ(b.host.transmitHold(kIntf), Reason::otherPeer);
  cp->peerSsciIs(own);
  EXPECT_EQ(b.host.transmitHold(kIntf), Reason::spentKey);
}

// The port forgets its peer before its key, and would send with it in between.
TEST_F(TheTransmitHold, SendsWithNoKeyThatWasAskedForUnderTheSsciOfAnotherPeer) {
  SakId const key = txSak(b);
  Vesk::WorldScope const scope(b.world);
  auto const cp = b.host.status()->cpStatus(kIntf);
  cp->peerSsciIs({{Lumo::EthAddr({2, 0, 0, 0, 0, 9}), 1}, "00000001"});
  cp->controlledPortEnabledIs(false);
  EXPECT_TRUE(b.host.keyHistory().isSpent(kIntf, key));
  b.actor()->livePeerDelAll();
  EXPECT_EQ(b.host.transmitHold(kIntf), Reason::spentKey);
  EXPECT_TRUE(isHeld(b));
}

TEST_F(TheTransmitHold, HoldsOverARestartWhatWasHeldBefore) {
  thirdIs(a);
  a.host.restart();
  EXPECT_EQ(a.host.transmitHold(kIntf), Reason::tooManyMembers);
  EXPECT_TRUE(isHeld(a));
}

TEST_F(TheTransmitHold, HoldsNothingBackAfterARestartThatIsOverByThen) {
  {
    Vesk::WorldScope const scope(a.world);
    a.host.transmitHoldInputDir()->forwardingModelInputIs(
        kIntf, Interface::intfForwardingModelUnauthorized());
    a.host.restart();
  }
  EXPECT_FALSE(isHeld(a));
  EXPECT_TRUE(a.host.isOpen(kIntf));
}

}  // namespace
}  // namespace Macsecd
