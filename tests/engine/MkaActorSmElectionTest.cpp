#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Peer.h"

namespace Macsec {
namespace {

using Support::ActorPort;
using Support::ActorWrites;
using Support::Peer;
using ::testing::ElementsAre;

Vesk::Ptr<MkaPeer> candidate(uint8_t priority, uint8_t lastByte, uint16_t portNum = 1) {
  auto peer = MkaPeer::MkaPeerIs("b1b2b3b4b5b6b7b8b9babbbc");
  BasicInfo basic;
  basic.keyServerPriorityIs(priority);
  basic.sciIs(Sci(Lumo::EthAddr({2, 0, 0, 0, 0, lastByte}), portNum));
  peer->baseInfoIs(basic);
  return peer;
}

TEST(ElectKeyServer, TheLowerPriorityWinsThenTheLowerAddressAndATieHasNoWinner) {
  auto const elects = [](Vesk::Ptr<MkaPeer> const& a, Vesk::Ptr<MkaPeer> const& b) {
    MkaPeer const* const winner = electKeyServer(a.ptr(), b.ptr());
    EXPECT_EQ(electKeyServer(b.ptr(), a.ptr()), winner);
    return winner == a.ptr() ? 'a' : winner == b.ptr() ? 'b' : '-';
  };
  EXPECT_EQ(elects(candidate(0, 9), candidate(1, 1)), 'a');
  EXPECT_EQ(elects(candidate(255, 1), candidate(254, 9)), 'b');
  EXPECT_EQ(elects(candidate(255, 1), candidate(255, 2)), 'a');
  EXPECT_EQ(elects(candidate(16, 0xf0), candidate(16, 2)), 'b');
  EXPECT_EQ(elects(candidate(16, 2, 1), candidate(16, 2, 9)), '-');
}

class Election : public ::testing::Test {
 protected:
  bool isSelf() const { return port.status().electedSelf(); }
  Sci const& winner() const { return port.status().keyServer(); }
  void mayNotBeKeyServer() {
    port.in([&] { port.intfStatus()->dot1xTypeIs(1); });
  }
  ActorPort port;  // priority 16, address ...:01
};

TEST_F(Election, WithoutACandidateTheActorElectsItself) {
  Peer peer(2);
  port.live(peer);
  EXPECT_TRUE(isSelf());
  EXPECT_EQ(winner(), port.portStatus()->mySci());
  EXPECT_EQ(port.tracedOnce(": Elected self is: 1"), 1u);
  EXPECT_EQ(
      port.tracedOnce(": Elected " + std::string(port.status().msgId().view()) + " as key server"),
      1u);
}

TEST_F(Election, WithoutACandidateAnActorThatMayNotServeStaysWithoutAKeyServer) {
  mayNotBeKeyServer();
  Peer peer(2);
  port.live(peer);
  EXPECT_FALSE(isSelf());
  EXPECT_EQ(winner(), Sci());
  EXPECT_FALSE(port.status().success());
  EXPECT_EQ(port.tracedOnce(": Unable to elect key server"), 1u);
}

TEST_F(Election, AnActorThatMayNotServeTakesTheBestOfItsPeers) {
  mayNotBeKeyServer();
  Peer worst(2, true, 255), best(3, true, 254);
  port.live(worst);
  EXPECT_EQ(winner(), worst.sci);
  port.live(best);
  EXPECT_EQ(winner(), best.sci);
  EXPECT_FALSE(isSelf());
}

TEST_F(Election, TakesTheBetterOfPeersAndSelf) {
  Peer better(2, true, 15), worse(3, true, 17);
  port.live(worse);
  EXPECT_TRUE(isSelf());
  port.live(better);
  EXPECT_FALSE(isSelf());
  EXPECT_EQ(winner(), better.sci);
}

TEST_F(Election, APeerThatDoesNotClaimIsNoCandidate) {
  Peer better(2, false, 0);
  port.live(better);
  EXPECT_TRUE(isSelf());
}

TEST_F(Election, APeerThatStopsClaimingIsDroppedAtItsNextMkpdu) {
  Peer better(2, true, 0);
  port.live(better);
  EXPECT_FALSE(isSelf());
  better.claims = false;
  port.live(better);
  EXPECT_TRUE(isSelf());
}

TEST_F(Election, ATieOfAddressesWithSelfLeavesNoKeyServer) {
  Peer twin(1, true, 16);
  twin.sci.portNumIs(7);
  port.live(twin);
  EXPECT_FALSE(isSelf());
  EXPECT_EQ(winner(), Sci());
  EXPECT_FALSE(port.status().success());
  EXPECT_EQ(port.tracedOnce(": Unable to elect key server"), 1u);
}

TEST_F(Election, TwoRecordsOfOneSciTieUntilTheOldOneAgesOut) {
  mayNotBeKeyServer();
  Peer former(2, true, 3), renewed(2, true, 3);
  renewed.id = "c1c2c3c4c5c6c7c8c9cacbcc";
  port.live(former);
  EXPECT_EQ(winner(), former.sci);
  port.world.time = 4;
  port.live(renewed);
  EXPECT_EQ(winner(), Sci());
  port.world.time = 7;
  port.transmit();
  port.live(renewed);
  EXPECT_EQ(winner(), renewed.sci);
}

// The list's own order decides in which place the third stands.
TEST_F(Election, AThirdCandidateAfterATieStandsUnopposed) {
  mayNotBeKeyServer();
  Peer one(2, true, 3), twin(2, true, 3), third(9, true, 200);
  twin.id = "c1c2c3c4c5c6c7c8c9cacbcc";
  port.live(one);
  port.live(twin);
  int timesLast = 0;
  for (char digit = '0'; digit <= '9'; ++digit) {
    third.id = Vesk::String8(std::string(24, digit));
    port.live(third);
    Vesk::String8 last;
    for (MkaPeer& peer : port.status().livePeer()) last = peer.msgId();
    EXPECT_EQ(winner(), last == third.id ? third.sci : Sci());
    timesLast += last == third.id;
    port.in([&] { port.status().livePeerDel(third.id); });
  }
  EXPECT_GT(timesLast, 0);
}

TEST_F(Election, IsNotSticky) {
  Peer better(2, true, 15);
  Peer other(3);
  port.live(other);
  EXPECT_TRUE(isSelf());
  port.live(better);
  EXPECT_FALSE(isSelf());
  EXPECT_FALSE(port.transmit().basic.keyServer());
  EXPECT_FALSE(port.status().chgdServer());
}

TEST_F(Election, WritesElectedSelfBeforeTheKeyServer) {
  Peer better(2, true, 15);
  Peer other(3);
  port.live(other);
  auto writes = Vesk::make<ActorWrites>(port, port.actor("6162"));
  port.live(better);
  EXPECT_THAT(writes->order, ElementsAre("livePeer", "newSak", "electedSelf", "keyServer"));
  Vesk::retire(writes);
}

}  // namespace
}  // namespace Macsec
