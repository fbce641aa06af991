#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Peer.h"

namespace Macsec {
namespace {

using Support::ActorPort;
using Support::ActorWrites;
using Support::Mkpdu;
using Support::Peer;
using ::testing::ElementsAre;

// What comes in.

TEST(Receive, AnMkpduForAnotherInterfaceOrAnotherKeyLeavesNoTrace) {
  ActorPort port;
  Peer peer(2);
  port.world.traces.clear();
  port.receive(peer.hello("9999"));
  port.in([&] {
    auto rx = port.pamManager->rxMessageInfo();
    rx->mkaInfo()->baseInfoIs(peer.hello().basic);
    rx->intfIdIs(Lumo::IntfId("Ethernet2"));
    rx->countInc(1);
    port.sm().handleRxMessage();
  });
  EXPECT_TRUE(port.world.traces.empty());
  EXPECT_TRUE(port.status().potentialPeer().empty());
}

TEST(Receive, TheSameMkpduTwiceIsTakenTwice) {
  ActorPort port;
  Peer peer(2);
  Mkpdu const mkpdu = peer.listing(port);
  port.receive(mkpdu);
  port.world.time = 1;
  port.receive(mkpdu);
  EXPECT_EQ(port.world.traced("bool Macsec::MkaActorSm::parseBasicInfo(): Actor "), 2u);
  EXPECT_EQ(port.status().livePeer(peer.id)->timeStamp(), 1);
}

TEST(Receive, AnOlderMessageNumberIsTakenLikeANewOne) {
  ActorPort port;
  Peer peer(2);
  peer.msgNum = 50;
  port.live(peer);
  peer.msgNum = 9;
  port.live(peer);
  EXPECT_EQ(port.status().livePeer(peer.id)->baseInfo().msgNum(), 10u);
}

TEST(Receive, OurOwnSciIsRefusedWhole) {
  ActorPort port;
  Peer twin(1);
  Mkpdu mkpdu = twin.listing(port);
  mkpdu.live.emplace_back("c1c2c3c4c5c6c7c8c9cacbcc", 4);
  port.receive(mkpdu);
  EXPECT_EQ(port.tracedOnce(": Duplicate SCI detected in incoming MKPDU"), 1u);
  EXPECT_TRUE(port.status().livePeer().empty());
  EXPECT_TRUE(port.status().potentialPeer().empty());
  twin.sci.portNumIs(2);
  port.receive(twin.listing(port));
  EXPECT_EQ(port.status().livePeer().members(), 1u);
}

TEST(Receive, ACollidingMemberIdentifierIsReplacedAndTheMkpduGoesOn) {
  ActorPort port;
  port.transmit();
  Vesk::String8 const former = port.status().msgId();
  Peer peer(2);
  peer.id = former;
  port.receive(peer.listing(port));
  EXPECT_EQ(port.tracedOnce(": Message ID collision detected"), 1u);
  EXPECT_NE(port.status().msgId(), former);
  EXPECT_EQ(port.status().msgNum(), 0u);
  EXPECT_TRUE(port.status().livePeer().empty());
  EXPECT_TRUE(port.status().potentialPeer(former));
}

bool isAccepted(uint32_t mine, uint32_t listed, uint8_t threshold = 2) {
  ActorPort port;
  Peer peer(2);
  port.in([&] {
    port.Switch::status->mkpduThresholdIs(threshold);
    port.status().msgNumIs(mine);
  });
  Mkpdu mkpdu = peer.hello();
  mkpdu.live.emplace_back(port.status().msgId(), listed);
  port.receive(mkpdu);
  EXPECT_EQ(static_cast<bool>(port.status().livePeer(peer.id)),
            !port.status().potentialPeer(peer.id));
  return static_cast<bool>(port.status().livePeer(peer.id));
}

TEST(Receive, AListedNumberMayLagBehindByTheThresholdAndNeverLead) {
  EXPECT_TRUE(isAccepted(10, 10));
  EXPECT_TRUE(isAccepted(10, 8));
  EXPECT_FALSE(isAccepted(10, 7));
  EXPECT_FALSE(isAccepted(10, 11));
  EXPECT_TRUE(isAccepted(10, 7, 3));
  EXPECT_FALSE(isAccepted(10, 9, 0));
}

TEST(Receive, TheLowestNumbersDoNotWrap) {
  EXPECT_TRUE(isAccepted(0, 0));
  EXPECT_FALSE(isAccepted(0, 1));
  EXPECT_FALSE(isAccepted(0, 0xFFFFFFFF));
  EXPECT_TRUE(isAccepted(1, 0));
  EXPECT_TRUE(isAccepted(0xFFFFFFFF, 0xFFFFFFFD));
}

TEST(Receive, AListingInThePotentialListCountsAsWell) {
  ActorPort port;
  Peer peer(2);
  Mkpdu mkpdu = peer.hello();
  mkpdu.live.emplace_back(port.status().msgId(), 5);
  mkpdu.potential.emplace_back(port.status().msgId(), 0);
  port.receive(mkpdu);
  EXPECT_TRUE(port.status().livePeer(peer.id));
  EXPECT_EQ(port.tracedOnce(": My MN detected in peer's live peer list"), 0u);
  EXPECT_EQ(port.tracedOnce(": My MN detected in peer's potential peer list"), 1u);
  mkpdu.live.back().second = 0;
  port.receive(mkpdu);
  EXPECT_EQ(port.tracedOnce(": My MN detected in peer's live peer list"), 1u);
  EXPECT_EQ(port.tracedOnce(": My MN detected in peer's potential peer list"), 1u);
}

// Who is on which list.

TEST(Peers, AMemberThatDoesNotListUsBecomesPotentialAndNoElectionRuns) {
  ActorPort port;
  Peer peer(2, true);
  port.world.time = 3;
  peer.uses(Support::sak(), false, true);
  port.receive(peer.hello());
  auto const record = port.status().potentialPeer(peer.id);
  ASSERT_TRUE(record);
  EXPECT_EQ(record->baseInfo().sci(), peer.sci);
  EXPECT_EQ(record->sakUseInfo(), peer.sakUse);
  EXPECT_EQ(record->timeStamp(), 3);
  EXPECT_EQ(port.world.traced(": Creating new potential peer b0b1b2b3b4b5b6b7b8b9ba02 for actor "
                              "6162 on Ethernet1"),
            1u);
  EXPECT_EQ(port.world.traced("doUpdateKeyServer"), 0u);
  EXPECT_EQ(port.status().keyServer(), Sci());
}

TEST(Peers, AMemberThatListsUsBecomesLiveAndIsToldOfBeforeItsRecordIsFilled) {
  ActorPort port;
  struct Watch final : Vesk::Reactor<MkaActorStatus const, Support::Switch, Watch> {
    using Reactor::Reactor;
    void onLivePeer(Vesk::String8 const& id) override {
      if (!notifier()->livePeer(id)) return;
      sci = notifier()->livePeer(id)->baseInfo().sci();
      loggedBefore = owner().world.logged("MKA_SESSION_ESTABLISHED");
    }
    Sci sci = Peer(9).sci;
    size_t loggedBefore = 9;
  };
  auto watch = Vesk::make<Watch>(port, port.actor("6162"));
  Peer peer(2);
  peer.sci.portNumIs(513);
  port.receive(peer.hello());
  port.live(peer);
  EXPECT_EQ(watch->sci, Sci());
  EXPECT_EQ(watch->loggedBefore, 0u);
  EXPECT_FALSE(port.status().potentialPeer(peer.id));
  EXPECT_EQ(port.world.traced(": Creating new live peer b0b1b2b3b4b5b6b7b8b9ba02 for actor 6162 "
                              "on Ethernet1"),
            1u);
  EXPECT_EQ(port.world.traced(": Removing b0b1b2b3b4b5b6b7b8b9ba02 from potential peer list of "
                              "actor 6162 on Ethernet1"),
            1u);
  ASSERT_EQ(port.world.logs[1].name, "MKA_SESSION_ESTABLISHED");
  EXPECT_EQ(port.world.logs[1].arguments,
            (std::vector<std::string>{"02:00:00:00:00:02", "513", "6162", "Ethernet1"}));
  Support::expectHandle(*port.world.handles[1], "MKA_SESSION_ESTABLISHED", 6,
                        "MKA session established with peer SCI %s::%s and CKN %s on interface %s",
                        "Peer having this SCI added to live peer list", 120.0);
  Vesk::retire(watch);
}

TEST(Peers, TheLivePathWritesInOrder) {
  ActorPort port;
  Peer peer(2);
  port.receive(peer.hello());
  auto writes = Vesk::make<ActorWrites>(port, port.actor("6162"));
  port.live(peer);
  EXPECT_THAT(writes->order, ElementsAre("livePeer", "potentialPeer", "electedSelf", "keyServer",
                                         "newSak", "success"));
  Vesk::retire(writes);
}

TEST(Peers, ALiveMemberThatStopsListingUsIsNotRefreshedAndAgesOut) {
  ActorPort port;
  Peer peer(2);
  port.live(peer);
  port.world.time = 5;
  port.receive(peer.hello());
  EXPECT_EQ(port.status().livePeer(peer.id)->timeStamp(), 0);
  EXPECT_EQ(port.status().livePeer(peer.id)->baseInfo().msgNum(), 1u);
  EXPECT_TRUE(port.status().potentialPeer().empty());
  port.world.time = 6;
  port.transmit();
  EXPECT_TRUE(port.status().livePeer(peer.id));
  port.world.time = 6.001;
  port.transmit();
  EXPECT_FALSE(port.status().livePeer(peer.id));
  EXPECT_EQ(port.world.traced(": Peer b0b1b2b3b4b5b6b7b8b9ba02 aged out from live peer list for "
                              "actor 6162 on Ethernet1"),
            1u);
  port.receive(peer.hello());
  EXPECT_TRUE(port.status().potentialPeer(peer.id));
}

TEST(Peers, PotentialMembersAgeOutByTheSameTime) {
  ActorPort port;
  Peer peer(2);
  port.receive(peer.hello());
  port.in([&] { port.Switch::status->mkaLifeTimeIs(3); });
  port.world.time = 3;
  port.transmit();
  EXPECT_TRUE(port.status().potentialPeer(peer.id));
  port.world.time = 3.5;
  port.transmit();
  EXPECT_FALSE(port.status().potentialPeer(peer.id));
  EXPECT_EQ(port.world.traced(" aged out from potential peer list for actor 6162 on Ethernet1"),
            1u);
}

TEST(Peers, ARecordOfTheFutureStays) {
  ActorPort port;
  port.in([&] { port.status().livePeerIs("b1b2b3b4b5b6b7b8b9babbbc")->timeStampIs(1000); });
  port.world.time = 500;
  port.transmit();
  EXPECT_EQ(port.status().livePeer().members(), 1u);
}

TEST(Peers, SeveralRecordsAgeOutInOneReview) {
  ActorPort port;
  std::vector<Peer> peers;
  for (uint8_t n = 2; n < 12; ++n) {
    port.live(peers.emplace_back(n));
    port.world.time = n == 8 ? 5 : port.world.time;
  }
  port.world.time = 7;
  port.transmit();
  EXPECT_EQ(port.status().livePeer().members(), 3u);
}

TEST(Peers, AMemberKnownFromAListingHasOnlyItsMessageNumber) {
  ActorPort port;
  Peer teller(2);
  Mkpdu mkpdu = teller.listing(port);
  mkpdu.live.emplace_back("c1c2c3c4c5c6c7c8c9cacbcc", 42);
  mkpdu.potential.emplace_back("d1d2d3d4d5d6d7d8d9dadbdc", 43);
  port.world.time = 2;
  port.receive(mkpdu);
  BasicInfo expected;
  expected.msgNumIs(42);
  auto const record = port.status().potentialPeer("c1c2c3c4c5c6c7c8c9cacbcc");
  ASSERT_TRUE(record);
  EXPECT_EQ(record->baseInfo(), expected);
  EXPECT_EQ(record->timeStamp(), 2);
  EXPECT_EQ(port.status().potentialPeer().members(), 1u);
  EXPECT_EQ(port.world.traced(": Adding new potential peer c1c2c3c4c5c6c7c8c9cacbcc for actor 6162 "
                              "on Ethernet1"),
            1u);
  EXPECT_TRUE(port.status().electedSelf());
}

TEST(Peers, ALiveMemberThatAnotherListsStandsOnBothListsUntilItsOwnMkpdu) {
  ActorPort port;
  Peer one(2), other(3);
  port.live(one);
  port.live(other);
  Mkpdu mkpdu = other.listing(port);
  mkpdu.live.emplace_back(one.id, 17);
  port.receive(mkpdu);
  EXPECT_TRUE(port.status().livePeer(one.id));
  EXPECT_TRUE(port.status().potentialPeer(one.id));
  EXPECT_EQ(port.status().livePeer(one.id)->baseInfo().msgNum(), 1u);
  port.live(one);
  EXPECT_TRUE(port.status().livePeer(one.id));
  EXPECT_FALSE(port.status().potentialPeer(one.id));
}

TEST(Peers, AReturningMemberIsAnnouncedAgainOnceTheRateLimitHasPassed) {
  ActorPort port;
  Peer peer(2);
  port.live(peer);
  for (double time : {10.0, 200.0}) {
    port.world.time = time;
    port.transmit();
    port.live(peer);
  }
  EXPECT_EQ(port.world.logged("MKA_SESSION_ESTABLISHED"), 2u);
}

TEST(Peers, TheReviewDoesNotElect) {
  ActorPort port;
  Peer server(2, true, 1), other(3);
  port.live(server);
  port.live(other);
  port.world.time = 5;
  port.live(other);
  port.world.time = 7;
  port.transmit();
  EXPECT_FALSE(port.status().livePeer(server.id));
  EXPECT_EQ(port.status().keyServer(), server.sci);
  EXPECT_FALSE(port.status().electedSelf());
  port.live(other);
  EXPECT_TRUE(port.status().electedSelf());
}

}  // namespace
}  // namespace Macsec
