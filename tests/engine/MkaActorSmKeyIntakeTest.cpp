#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "runtime/Exceptions.h"
#include "tests/support/Peer.h"

namespace Macsec {
namespace {

using Support::ActorPort;
using Support::ActorWrites;
using Support::Peer;
using Support::sak;
using ::testing::ElementsAre;

constexpr CipherSuite kCipher = CipherSuite::gcmAesXpn128;

TEST(SakMatch, ComparesNumberAssociationAndMemberAndNothingElse) {
  KeyInfo const info(1, true, true, "b1b2b3b4b5b6b7b8b9babbbc", 7, 99);
  EXPECT_TRUE(sakMatch(info, sak(1, 7)));
  EXPECT_FALSE(sakMatch(info, sak(2, 7)));
  EXPECT_FALSE(sakMatch(info, sak(1, 8)));
  EXPECT_FALSE(sakMatch(info, sak(1, 7, "c1c2c3c4c5c6c7c8c9cacbcc")));
  EXPECT_TRUE(sakMatch(KeyInfo(1, false, false, "b1b2b3b4b5b6b7b8b9babbbc", 7, 0), sak(1, 7)));
  EXPECT_FALSE(sakMatch(KeyInfo(), Sak()));
}

/// An actor that follows the key server `server`.
class Follower : public ::testing::Test {
 protected:
  Follower() { port.live(server); }
  /// The MKPDU of the key server, with what it distributes and uses now.
  void hear() { port.live(server); }
  void distribute(uint8_t an, uint32_t keyNum, char const* key = "wrapped") {
    server.sakDist = SakDistInfo(ANOffset(an, 0), keyNum, kCipher, key);
    hear();
  }
  size_t traced(char const* text) const { return port.world.traced(text); }

  ActorPort port;
  Peer server{2, true, 1};
};

TEST_F(Follower, TakesOverTheKeyThatTheKeyServerDistributes) {
  auto writes = Vesk::make<ActorWrites>(port, port.actor("6162"));
  port.in([&] { port.status().sakTransmitIs(true); });
  writes->order.clear();
  distribute(1, 7);
  EXPECT_THAT(writes->order, ElementsAre("sakTransmit", "distSak"));
  Sak expected{AssociationNumber(1)};
  expected.keyMsgIdIs(server.id);
  expected.keyNumIs(7);
  expected.keyIs("wrapped");
  EXPECT_EQ(port.status().distSak(), expected);
  EXPECT_EQ(traced(": Resetting sakTransmitfor actor 6162 on Ethernet1"), 1u);
  EXPECT_EQ(traced(": Installing SAK from peer b0b1b2b3b4b5b6b7b8b9ba02 for actor 6162 on "
                   "Ethernet1"),
            1u);
  Vesk::retire(writes);
}

TEST_F(Follower, IgnoresARepeatedKeySilently) {
  distribute(1, 7);
  auto writes = Vesk::make<ActorWrites>(port, port.actor("6162"));
  distribute(1, 7);
  distribute(3, 7, "another");
  EXPECT_THAT(writes->order, ElementsAre());
  EXPECT_EQ(port.status().distSak().key(), "wrapped");
  EXPECT_EQ(traced(": Installing SAK from peer "), 1u);
  distribute(2, 8);
  EXPECT_EQ(port.status().distSak().keyNum(), 8u);
  Vesk::retire(writes);
}

TEST_F(Follower, TakesTheSameNumberOfAnotherMemberAsNew) {
  distribute(1, 7);
  Vesk::String8 const former = server.id;
  server.id = "c1c2c3c4c5c6c7c8c9cacbcc";
  port.in([&] { port.status().livePeerDel(former); });
  distribute(1, 7);
  EXPECT_EQ(port.status().distSak().keyMsgId(), server.id);
}

TEST_F(Follower, IgnoresAKeyOfAnotherCipherSuiteEachTime) {
  server.sakDist = SakDistInfo(ANOffset(1, 0), 7, CipherSuite::gcmAesXpn256, "wrapped");
  hear();
  hear();
  EXPECT_EQ(port.status().distSak(), Sak());
  EXPECT_EQ(traced(": Cipher Suite mismatch from peer b0b1b2b3b4b5b6b7b8b9ba02. Ignoring dist SAK "
                   "set for actor 6162 on Ethernet1"),
            2u);
}

TEST_F(Follower, AnAssociationNumberThatTheWireCannotCarryThrows) {
  try {
    distribute(4, 7);
    FAIL();
  } catch (Vesk::RangeException const& e) {
    EXPECT_STREQ(
        e.what(),
        "AssociationNumber::value < AssociationNumber::min or > AssociationNumber::max not "
        "allowed");
  }
}

TEST_F(Follower, IgnoresKeysOfAMemberThatIsNotKeyServerThoughItClaims) {
  Peer other(3, true, 200);
  other.sakDist = SakDistInfo(ANOffset(1, 0), 7, kCipher, "wrapped");
  other.cakDist = CakDistInfo("cak", "ckn");
  port.live(other);
  EXPECT_EQ(port.status().distSak(), Sak());
  EXPECT_EQ(port.status().distCak(), Cak());
  EXPECT_EQ(traced(": Received dist SAK from a peer b0b1b2b3b4b5b6b7b8b9ba03 who is not a key "
                   "server for actor 6162 on Ethernet1"),
            1u);
  EXPECT_EQ(traced(": Received dist CAK from a peer b0b1b2b3b4b5b6b7b8b9ba03 who is not a key "
                   "server for actor 6162 on Ethernet1"),
            1u);
}

TEST_F(Follower, IgnoresAllSetsOfAMemberThatIsNotLive) {
  Peer other(3, true, 0);
  other.sakDist = SakDistInfo(ANOffset(1, 0), 7, kCipher, "wrapped");
  other.cakDist = CakDistInfo("cak", "ckn");
  other.uses(sak(), true, true);
  port.receive(other.hello());
  for (char const* set : {"CAK dist", "SAK dist", "SAK use"}) {
    EXPECT_EQ(port.world.traced(": Peer b0b1b2b3b4b5b6b7b8b9ba03 not in live peer list of actor "
                                "6162 on Ethernet1. Ignoring " +
                                std::string(set) + " set."),
              1u);
  }
  EXPECT_EQ(port.status().distSak(), Sak());
}

TEST_F(Follower, NamesSetsThatAreAbsent) {
  for (char const* set : {"Dist CAK set found", "Dist SAK set found", "SAK USE set present"}) {
    EXPECT_EQ(port.world.traced(": No " + std::string(set) +
                                " in MKPDU from peer "
                                "b0b1b2b3b4b5b6b7b8b9ba02 for actor 6162 on Ethernet1"),
              1u);
  }
}

TEST_F(Follower, RecordsADistributedCak) {
  server.cakDist = CakDistInfo("cak", "6768");
  hear();
  EXPECT_EQ(port.status().distCak(), Cak("6768", "cak"));
}

TEST_F(Follower, TransmitsAsLongAsTheKeyServerReportsThatItDoes) {
  distribute(1, 7);
  server.uses(port.status().distSak(), true, true);
  hear();
  EXPECT_TRUE(port.status().sakTransmit());
  EXPECT_EQ(traced(": Setting sakTransmit:  1 for actor 6162 on Ethernet1"), 1u);
  server.uses(port.status().distSak(), false, true);
  hear();
  EXPECT_FALSE(port.status().sakTransmit());
  server.sakUse.oldKeyInfoIs(KeyInfo(1, true, false, server.id, 7, 0));
  server.sakUse.latestKeyInfoIs(KeyInfo());
  hear();
  EXPECT_TRUE(port.status().sakTransmit());
}

TEST_F(Follower, LeavesTransmitAloneWhenTheKeyServerReportsAnotherKey) {
  distribute(1, 7);
  port.in([&] { port.status().sakTransmitIs(true); });
  server.uses(sak(2, 8), false, false);
  hear();
  EXPECT_TRUE(port.status().sakTransmit());
}

TEST_F(Follower, FollowsNobodyWithoutTheBitOfTheKeyServer) {
  distribute(1, 7);
  Peer other(3);
  other.uses(port.status().distSak(), true, true);
  port.live(other);
  EXPECT_FALSE(port.status().sakTransmit());
}

TEST_F(Follower, LooksAtTheUseSetThoughTheDistributedKeyWasIgnored) {
  server.sakDist = SakDistInfo(ANOffset(1, 0), 7, CipherSuite::gcmAesXpn256, "wrapped");
  port.in([&] { port.status().distSakIs(sak(1, 7)); });
  server.uses(sak(1, 7), true, true);
  hear();
  EXPECT_TRUE(port.status().sakTransmit());
}

TEST_F(Follower, KeepsPacketNumbersOnlyUnderDelayProtectionOfTheSender) {
  server.uses(sak(), true, true, 500, true);
  server.sakUse.oldKeyInfoIs(KeyInfo(3, true, true, "x", 1, 400));
  hear();
  EXPECT_EQ(port.status().keysLPN(), KeysLPN(400, 500));
  SakUseInfo const filled = server.sakUse;
  server.sakUse = SakUseInfo();
  hear();
  EXPECT_EQ(port.status().keysLPN(), KeysLPN(400, 500));
  server.sakUse = filled;
  server.sakUse.plainTextInfoIs(PlainTextInfo(true, true, false));
  hear();
  EXPECT_EQ(port.status().keysLPN(), KeysLPN());
}

TEST_F(Follower, CountsNoExhaustion) {
  server.uses(sak(), true, true, 0xFFFFFFFF);
  hear();
  EXPECT_EQ(port.status().llpnExhaustion(), 0u);
}

/// The elected key server, with a key that it distributes.
class Server : public ::testing::Test {
 protected:
  Server() {
    port.live(one);
    port.in([&] { port.status().distSakIs(sak(1, 7)); });
  }
  ActorPort port;
  Peer one{2};
  Peer other{3};
};

TEST_F(Server, TransmitsWhenEveryLivePeerCanReceive) {
  one.uses(sak(1, 7), false, true);
  port.live(one);
  EXPECT_TRUE(port.status().sakTransmit());
  EXPECT_EQ(port.world.traced(": Setting sakTransmit 1 for actor 6162 on Ethernet1"), 1u);
  one.uses(sak(1, 7), false, false);
  port.live(one);
  EXPECT_TRUE(port.status().sakTransmit());
}

TEST_F(Server, WaitsForAPeerThatHasNotReportedAnyUse) {
  port.live(other);
  port.in([&] { port.status().distSakIs(sak(1, 7)); });
  EXPECT_EQ(port.world.traced(": Setting sakTransmit "), 0u);
  one.uses(sak(1, 7), true, true);
  port.live(one);
  port.live(one);
  EXPECT_FALSE(port.status().sakTransmit());
  EXPECT_EQ(port.world.traced(": Setting sakTransmit 0 for actor 6162 on Ethernet1"), 2u);
  other.uses(sak(1, 7), false, false);
  port.live(other);
  EXPECT_FALSE(port.status().sakTransmit());
  other.uses(sak(1, 7), false, true);
  port.live(other);
  EXPECT_TRUE(port.status().sakTransmit());
}

TEST_F(Server, CountsAKeyInTheOldSlotAsReceived) {
  one.sakUse.oldKeyInfoIs(KeyInfo(1, false, true, sak().keyMsgId(), 7, 0));
  one.sakUse.latestKeyInfoIs(KeyInfo(2, true, false, sak().keyMsgId(), 8, 0));
  port.live(one);
  EXPECT_TRUE(port.status().sakTransmit());
}

TEST_F(Server, DoesNotTakeAUseSetWithoutKeysForReception) {
  one.sakUse.plainTextInfoIs(PlainTextInfo(true, true, true));
  port.live(one);
  EXPECT_FALSE(port.status().sakTransmit());
}

TEST_F(Server, HasNothingToWaitForWithoutAKey) {
  port.in([&] { port.status().distSakIs(Sak()); });
  one.uses(sak(1, 7), true, true);
  port.live(one);
  EXPECT_EQ(port.world.traced(": Setting sakTransmit "), 0u);
}

// `old` and `latest` keep the values of the peer that the walk looked at last.
TEST_F(Server, TakesPacketNumbersOfThePeerLookedAtLast) {
  other.uses(sak(1, 7), false, true, 222, true);
  port.live(other);
  port.in([&] {
    port.status().distSakIs(sak(1, 7));
    port.status().sakTransmitIs(false);
  });
  one.uses(sak(1, 7), false, true, 111, true);
  port.live(one);
  Vesk::String8 last;
  for (MkaPeer& peer : port.status().livePeer()) last = peer.msgId();
  EXPECT_TRUE(port.status().sakTransmit());
  EXPECT_EQ(port.status().keysLPN(), KeysLPN(0, last == one.id ? 111 : 222));
  Peer& notLast = last == one.id ? other : one;
  port.in([&] { port.status().sakTransmitIs(false); });
  port.live(notLast);
  EXPECT_EQ(port.status().keysLPN(), KeysLPN(0, last == one.id ? 111 : 222));
  port.live(notLast);
  EXPECT_EQ(port.status().keysLPN(), KeysLPN(0, last == one.id ? 222 : 111));
}

TEST_F(Server, CountsExhaustionFromThreeQuartersOfThePacketNumbersInEitherSlot) {
  one.uses(sak(3, 1), false, false, 0xBFFFFFFF);
  port.live(one);
  EXPECT_EQ(port.status().llpnExhaustion(), 0u);
  one.uses(sak(3, 1), false, false, 0xC0000000);
  port.live(one);
  EXPECT_EQ(port.status().llpnExhaustion(), 1u);
  one.uses(sak(3, 1), false, false, 0);
  one.sakUse.oldKeyInfoIs(KeyInfo(0, false, false, "x", 1, 0xFFFFFFFF));
  port.live(one);
  port.live(one);
  EXPECT_EQ(port.status().llpnExhaustion(), 3u);
  EXPECT_EQ(port.tracedOnce(": LLPN exhaustion detected"), 3u);
}

}  // namespace
}  // namespace Macsec
