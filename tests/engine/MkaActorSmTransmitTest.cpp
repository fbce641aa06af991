#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Peer.h"

namespace Macsec {
namespace {

using Support::ActorPort;
using Support::Mkpdu;
using Support::Peer;
using Support::sak;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

TEST(Transmit, AnActorWithoutPeersClaimsToBeKeyServerAndSendsNoSets) {
  ActorPort port;
  Mkpdu const first = port.transmit();
  EXPECT_EQ(first.basic, BasicInfo(16, true, true, 2, Sci(Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 1),
                                   port.status().msgId(), 1, "6162"));
  EXPECT_THAT(first.live, IsEmpty());
  EXPECT_THAT(first.potential, IsEmpty());
  EXPECT_EQ(first.sakDist, SakDistInfo());
  EXPECT_EQ(first.sakUse, SakUseInfo());
  port.in([&] { port.intfStatus()->dot1xTypeIs(0); });
  EXPECT_TRUE(port.transmit().basic.keyServer());
  EXPECT_EQ(port.sent.back().basic.msgNum(), 2u);
}

TEST(Transmit, AnActorThatMayNotBeKeyServerDoesNotClaimIt) {
  ActorPort port;
  port.in([&] { port.intfStatus()->dot1xTypeIs(1); });
  EXPECT_FALSE(port.transmit().basic.keyServer());
  EXPECT_EQ(port.sent.back().basic.keyServerPriority(), 255);
}

TEST(Transmit, OnceAKeyServerIsKnownOnlyTheElectedOneClaims) {
  ActorPort port;
  port.in([&] { port.status().keyServerIs(Peer(2).sci); });
  EXPECT_FALSE(port.transmit().basic.keyServer());
  port.in([&] { port.status().electedSelfIs(true); });
  EXPECT_TRUE(port.transmit().basic.keyServer());
}

TEST(Transmit, ACipherThatIsNotOursLowersTheCapability) {
  for (CipherSuite cipher : {CipherSuite::None, CipherSuite::gcmAesXpn256}) {
    Support::Switch s{1};
    s.in([&] {
      s.status->intfStatusIs(s.intfId, MacsecParams(cipher, false));
      auto actor = s.status->portStatusIs(s.intfId)->actorStatusIs("6162");
      s.status->cpStatusIs(s.intfId, MacsecParams(cipher, false));
      actor->msgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
      auto sm =
          mkaActorSmFactory("6162", "", s.intfId, s.status, s.pamManager, s.hwStatus, s.wheel);
      sm->handleMkpduTimerExpiry();
    });
    EXPECT_EQ(s.sent.back().basic.macsecCapability(), cipher == CipherSuite::None ? 1 : 2);
  }
}

TEST(Transmit, TheLastMessageNumberGoesOutAndThenComesANewIdentity) {
  ActorPort port;
  Vesk::String8 const msgId = port.status().msgId();
  port.in([&] { port.status().msgNumIs(0xFFFFFFFE); });
  Mkpdu const last = port.transmit();
  EXPECT_EQ(last.basic.msgId(), msgId);
  EXPECT_EQ(last.basic.msgNum(), 0xFFFFFFFFu);
  Mkpdu const first = port.transmit();
  EXPECT_NE(first.basic.msgId(), msgId);
  EXPECT_EQ(first.basic.msgId(), port.status().msgId());
  EXPECT_EQ(first.basic.msgNum(), 1u);
}

TEST(Transmit, ListsBothKindsOfPeersWithTheNumbersLastHeard) {
  ActorPort port;
  Peer live(2), potential(3);
  port.live(live);
  port.receive(potential.hello());
  Mkpdu tells = live.listing(port);
  tells.live.emplace_back(live.id, 99);
  port.receive(tells);
  Mkpdu const sent = port.transmit();
  EXPECT_THAT(sent.live, ElementsAre(Pair(live.id, 2u)));
  EXPECT_THAT(sent.potential,
              ::testing::UnorderedElementsAre(Pair(potential.id, 1u), Pair(live.id, 99u)));
}

TEST(Transmit, APeerThatAgesOutIsMissingFromThisVeryMkpdu) {
  ActorPort port;
  Peer peer(2);
  port.live(peer);
  EXPECT_TRUE(port.status().success());
  port.world.time = 6.5;
  Mkpdu const sent = port.transmit();
  EXPECT_THAT(sent.live, IsEmpty());
  EXPECT_FALSE(port.status().success());
  EXPECT_TRUE(sent.basic.keyServer());
  EXPECT_EQ(port.sm().mkpduTimer().time(), 8.5);
}

class DistributedKey : public ::testing::Test {
 protected:
  DistributedKey() {
    port.in([&] {
      port.status().electedSelfIs(true);
      port.status().principalIs(true);
      port.status().distSakIs(sak(2, 5));
    });
  }
  bool isSent() { return port.transmit().sakDist != SakDistInfo(); }
  ActorPort port;
};

TEST_F(DistributedKey, RepeatsUntilTransmitWithItHasBegun) {
  EXPECT_EQ(port.transmit().sakDist,
            SakDistInfo(ANOffset(2, 0), 5, CipherSuite::gcmAesXpn128, "encoded"));
  EXPECT_TRUE(isSent());
  port.in([&] { port.status().sakTransmitIs(true); });
  EXPECT_FALSE(isSent());
  EXPECT_EQ(port.status().distSak(), sak(2, 5));
}

TEST_F(DistributedKey, IsSentByThePrincipalKeyServerAlone) {
  port.in([&] { port.status().principalIs(false); });
  EXPECT_FALSE(isSent());
  port.in([&] {
    port.status().principalIs(true);
    port.status().electedSelfIs(false);
    port.status().distSakIs(sak(2, 5));
  });
  EXPECT_FALSE(isSent());
}

TEST_F(DistributedKey, IsNotSentWhileThereIsNone) {
  port.in([&] { port.status().distSakIs(Sak()); });
  EXPECT_FALSE(isSent());
}

class KeysInUse : public ::testing::Test {
 protected:
  KeysInUse() {
    port.in([&] {
      port.cpStatus()->latestSakContextIs(SakContext(sak(1, 8), 70, true, true, false, true));
      port.cpStatus()->oldSakContextIs(SakContext(sak(0, 7), 60, false, false, true, false));
    });
  }
  ActorPort port;
};

TEST_F(KeysInUse, AreReportedAsInstalledNotAsAskedFor) {
  Peer peer(2);
  port.live(peer);
  SakUseInfo const use = port.transmit().sakUse;
  EXPECT_EQ(use.latestKeyInfo(), KeyInfo(1, false, true, "b1b2b3b4b5b6b7b8b9babbbc", 8, 70));
  EXPECT_EQ(use.oldKeyInfo(), KeyInfo(0, true, false, "b1b2b3b4b5b6b7b8b9babbbc", 7, 60));
  EXPECT_EQ(use.plainTextInfo(), PlainTextInfo(false, false, false));
  port.in([&] { port.Switch::status->delayProtectionIs(true); });
  EXPECT_EQ(port.transmit().sakUse.plainTextInfo(), PlainTextInfo(false, false, true));
}

TEST_F(KeysInUse, AreNotReportedWithoutALivePeer) {
  EXPECT_EQ(port.transmit().sakUse, SakUseInfo());
}

TEST_F(KeysInUse, AreNotReportedWhenBothContextsAreEmpty) {
  Peer peer(2);
  port.live(peer);
  port.in([&] { port.cpStatus()->latestSakContextIs(SakContext()); });
  EXPECT_NE(port.transmit().sakUse, SakUseInfo());
  port.in([&] { port.cpStatus()->oldSakContextIs(SakContext()); });
  EXPECT_EQ(port.transmit().sakUse, SakUseInfo());
}

TEST(Transmit, TheCountComesAfterEverythingElse) {
  ActorPort port;
  struct Writes final : Vesk::Reactor<MkaMessageInfo const, Support::Switch, Writes> {
    using Reactor::Reactor;
    void onIntfId() override { order.push_back("intfId"); }
    void onMkaInfo() override { order.push_back("mkaInfo"); }
    void onLivePeer(Vesk::String8 const&) override { order.push_back("live"); }
    void onPotentialPeer(Vesk::String8 const&) override { order.push_back("potential"); }
    void onCount() override { order.push_back("count"); }
    std::vector<std::string> order;
  };
  Peer live(2), potential(3);
  port.live(live);
  port.receive(potential.hello());
  auto writes = Vesk::make<Writes>(port, port.pamManager->txMessageInfo());
  port.transmit();
  EXPECT_THAT(writes->order, ElementsAre("intfId", "mkaInfo", "live", "potential", "count"));
  writes->order.clear();
  port.transmit();
  EXPECT_THAT(writes->order, ElementsAre("live", "potential", "live", "potential", "count"));
  Vesk::retire(writes);
}

TEST(Transmit, NeverWritesADistributedCakNorAnIcvIndicator) {
  ActorPort port;
  port.in([&] { port.status().distCakIs(Cak("6768", "encoded")); });
  EXPECT_EQ(port.transmit().cakDist, CakDistInfo());
  EXPECT_EQ(port.pamManager->txMessageInfo()->mkaInfo()->icvIndicatorInfo(), IcvIndicatorInfo());
}

}  // namespace
}  // namespace Macsec
