#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/KeyNames.h"
#include "tests/support/Peer.h"

namespace Macsec {
namespace {

using Support::ActorPort;
using Support::ActorWrites;
using Support::kCkn;
using Support::key;
using Support::Peer;
using ::testing::ElementsAre;

constexpr char const* kLongCkn = "6162636465666768696a6b6c6d6e6f707172737475767778797a303132333435";

TEST(Actor, DerivesItsKeysAtItsFirstStartTheKekBeforeTheIck) {
  Support::Switch s{1};
  s.in([&] {
    s.status->portStatusIs(s.intfId)->actorStatusIs(kLongCkn)->cakIs(key(kLongCkn).cak());
  });
  auto writes = Vesk::make<ActorWrites>(s, s.actor(kLongCkn));
  Cak const configured = key(kLongCkn);
  s.start(configured);
  EXPECT_THAT(writes->order, ElementsAre("msgId", "cak", "kek", "ick"));
  auto const actor = s.actor(kLongCkn);
  EXPECT_EQ(actor->cak(), configured.cak());
  s.in([&] {
    EXPECT_EQ(WardcodeLib::doDecodeKey(actor->kek()), "d1eed7b4638f373c9b5891bb6342cdb8");
    EXPECT_EQ(WardcodeLib::doDecodeKey(actor->ick()), "daf4c372bc50b80a86a39eb12b360517");
  });
  Vesk::retire(writes);
}

TEST(Actor, ContinuesOverAStatusThatHasBeenUsed) {
  Support::Switch s{1};
  s.in([&] {
    auto actor = s.status->portStatusIs(s.intfId)->actorStatusIs(kCkn);
    actor->cakIs(key(kCkn).cak());
    actor->msgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
    actor->msgNumIs(7);
    actor->kekIs("kek");
    actor->ickIs("ick");
    actor->livePeerIs("b1b2b3b4b5b6b7b8b9babbbc");
  });
  auto writes = Vesk::make<ActorWrites>(s, s.actor(kCkn));
  s.start(key(kCkn));
  EXPECT_THAT(writes->order, ElementsAre());
  EXPECT_EQ(s.actor(kCkn)->msgNum(), 7u);
  EXPECT_EQ(s.actor(kCkn)->livePeer().members(), 1u);
  EXPECT_TRUE(s.actorSm(kCkn)->initialized());
  Vesk::retire(writes);
}

double firstMkpdu(int drawn, double period, bool delayProtection, size_t& left) {
  Support::Switch s{1};
  s.in([&] {
    s.status->mkpduPeriodIs(period);
    s.status->delayProtectionIs(delayProtection);
  });
  s.world.time = 10;
  s.world.delays = {drawn};
  s.start(key(kCkn));
  left = s.world.delays.size();
  return s.actorSm(kCkn)->mkpduTimer().time() - 10;
}

TEST(Actor, SendsItsFirstMkpduAfterAWholeNumberOfSecondsBelowThePeriod) {
  size_t left = 9;
  EXPECT_EQ(firstMkpdu(0, 2.0, false, left), 0);
  EXPECT_EQ(firstMkpdu(1, 2.0, false, left), 1);
  EXPECT_EQ(firstMkpdu(7, 2.0, false, left), 1);
  EXPECT_EQ(firstMkpdu(8, 5.9, false, left), 3);
  EXPECT_EQ(left, 0u);
  EXPECT_EQ(firstMkpdu(1, 0.5, false, left), 0);
}

TEST(Actor, DrawsNoDelayUnderDelayProtection) {
  size_t left = 9;
  EXPECT_EQ(firstMkpdu(1, 0.5, true, left), 0);
  EXPECT_EQ(left, 1u);
  EXPECT_EQ(firstMkpdu(1, 2.0, true, left), 0);
  EXPECT_EQ(left, 1u);
}

TEST(Actor, ARunningTimerKeepsItsTimeWhenThePeriodChanges) {
  ActorPort port;
  port.transmit();
  EXPECT_EQ(port.sm().mkpduTimer().time(), 2);
  port.in([&] { port.Switch::status->mkpduPeriodIs(0.5); });
  EXPECT_EQ(port.sm().mkpduTimer().time(), 2);
  port.transmit();
  EXPECT_EQ(port.sm().mkpduTimer().time(), 0.5);
}

TEST(Actor, TriesMemberIdentifiersUntilOneConflictsWithNoPeer) {
  ActorPort port;
  auto const id = [](char c) { return Vesk::String8(std::string(24, c)); };
  port.in([&] {
    port.status().livePeerIs(id('1'));
    port.status().potentialPeerIs(id('2'));
    port.status().msgNumIs(5);
    for (uint8_t byte : std::initializer_list<uint8_t>{0x11, 0x22, 0x33}) {
      port.world.nextRandom.insert(port.world.nextRandom.end(), 12, byte);
    }
    port.sm().updateMsgId();
  });
  EXPECT_EQ(port.status().msgId(), id('3'));
  EXPECT_EQ(port.status().msgNum(), 0u);
  EXPECT_EQ(port.tracedOnce(": Generated msg ID is 333333333333333333333333"), 1u);
  EXPECT_EQ(port.world.traced("void Macsec::MkaActorSm::updateMsgId(): Generated msg ID is"), 4u);
  EXPECT_EQ(port.tracedOnce(": Found a conflicting msgID in live peer list"), 1u);
  EXPECT_EQ(port.tracedOnce(": Found a conflicting msgID in potential peer list"), 1u);
  EXPECT_EQ(port.status().livePeer().members(), 1u);
}

TEST(Actor, OffersTheConfiguredPriorityOnlyForAConfiguredKey) {
  ActorPort port;
  auto const priority = [&](uint8_t type) {
    port.in([&] { port.intfStatus()->dot1xTypeIs(type); });
    return static_cast<int>(port.sm().getKeyServerPriority());
  };
  port.in([&] { port.intfStatus()->keyServerPriorityIs(7); });
  EXPECT_EQ(priority(2), 7);
  EXPECT_EQ(priority(0), 16);
  EXPECT_EQ(priority(1), 255);
  EXPECT_EQ(priority(3), 255);
}

TEST(Actor, HasAKeyServerAndAControlledPortExactlyWhileItIsPrincipal) {
  ActorPort port;
  EXPECT_FALSE(port.sm().keyServerSm());
  EXPECT_FALSE(port.sm().cpSm());
  port.in([&] { port.status().principalIs(true); });
  auto const keyServer = port.sm().keyServerSm();
  auto const controlledPort = port.sm().cpSm();
  ASSERT_TRUE(keyServer && controlledPort);
  port.in([&] { port.sm().handlePrincipalActor(); });
  EXPECT_EQ(port.sm().keyServerSm(), keyServer);
  EXPECT_EQ(port.sm().cpSm(), controlledPort);
  port.in([&] { port.status().principalIs(false); });
  EXPECT_FALSE(port.sm().keyServerSm());
  EXPECT_FALSE(port.sm().cpSm());
}

TEST(Actor, SucceedsWithALivePeerAndAKeyServer) {
  ActorPort port;
  auto writes = Vesk::make<ActorWrites>(port, port.actor(kCkn));
  port.in([&] {
    port.status().livePeerIs("b1b2b3b4b5b6b7b8b9babbbc");
    port.sm().doUpdateActorSuccess();
  });
  EXPECT_FALSE(port.status().success());
  EXPECT_EQ(port.world.logged("MKA_STATE_CHG"), 0u);
  port.in([&] {
    port.status().keyServerIs(Peer(2).sci);
    port.sm().doUpdateActorSuccess();
    port.sm().doUpdateActorSuccess();
  });
  EXPECT_TRUE(port.status().success());
  EXPECT_EQ(port.world.logged("MKA_STATE_CHG"), 1u);
  EXPECT_EQ(port.world.logs.back().arguments,
            (std::vector<std::string>{"6162", "UP", "Ethernet1"}));
  EXPECT_EQ(port.world.logs.back().text, "MKA using key 6162 UP on interface Ethernet1");
  EXPECT_EQ(port.world.traced(": Marking actor 6162 SUCCESS on Ethernet1"), 1u);
  Support::expectHandle(*port.world.handles.back(), "MKA_STATE_CHG", 5,
                        "MKA using key %s %s on interface %s",
                        "Macsec key agreement protocol state changed on the interface", 0.0);
  Vesk::retire(writes);
}

TEST(Actor, TheLossOfTheLastLivePeerClearsSuccessThenElectionThenKeyServer) {
  ActorPort port;
  Peer one(2), other(3);
  port.live(one);
  port.live(other);
  EXPECT_TRUE(port.status().electedSelf());
  port.in([&] {
    port.status().livePeerDel(other.id);
    port.sm().doUpdateActorSuccess();
  });
  EXPECT_TRUE(port.status().success() && port.status().electedSelf());
  auto writes = Vesk::make<ActorWrites>(port, port.actor(kCkn));
  Vesk::String8 const msgId = port.status().msgId();
  port.in([&] {
    port.status().sakTransmitIs(true);
    port.status().livePeerDelAll();
    writes->order.clear();
    port.sm().doUpdateActorSuccess();
    port.sm().doUpdateActorSuccess();
  });
  EXPECT_THAT(writes->order, ElementsAre("success", "electedSelf", "keyServer"));
  EXPECT_EQ(port.status().keyServer(), Sci());
  EXPECT_TRUE(port.status().sakTransmit());
  EXPECT_EQ(port.status().msgId(), msgId);
  EXPECT_EQ(port.world.logs.back().text, "MKA using key 6162 DOWN on interface Ethernet1");
  EXPECT_EQ(port.world.logged("MKA_STATE_CHG"), 2u);
  EXPECT_EQ(port.world.traced(": Marking actor 6162 FAILED on Ethernet1"), 1u);
  Vesk::retire(writes);
}

TEST(Actor, LivesWithoutPacketsAndGoesOnReviewing) {
  ActorPort port;
  port.in([&] {
    port.portStatus()->actorStatusIs("7777");
    auto const actor = mkaActorSmFactory("7777", key("7777").cak(), port.intfId,
                                         port.Switch::status, nullptr, port.hwStatus, port.wheel);
    EXPECT_FALSE(actor->rxMessageInfo() || actor->txMessageInfo());
    port.actor("7777")->livePeerIs("b1b2b3b4b5b6b7b8b9babbbc");
    port.world.time = 7;
    actor->handleMkpduTimerExpiry();
    EXPECT_EQ(actor->mkpduTimer().time(), 9);
    EXPECT_TRUE(port.actor("7777")->livePeer().empty());
    port.portStatus()->actorStatusDel("7777");
  });
  EXPECT_TRUE(port.sent.empty());
}

TEST(Actor, DisarmsItsTimerWhenItEnds) {
  Support::Switch s{1};
  s.start(key(kCkn));
  size_t const armed = s.wheel->armed();
  EXPECT_GT(armed, 0u);
  s.in([&] { s.intfStatus()->keyIs(Cak()); });
  EXPECT_FALSE(s.actorSm(kCkn));
  EXPECT_EQ(s.wheel->armed(), armed - 1);
}

TEST(Actor, ListensToAnotherReceivedMessageWhenTheManagerHasOne) {
  ActorPort port;
  port.in([&] {
    port.pamManager->rxMessageInfoDel();
    port.pamManager->rxMessageInfoIs();
  });
  Peer peer(2);
  port.receive(peer.hello());
  EXPECT_TRUE(port.status().potentialPeer(peer.id));
}

TEST(Actor, EntersEachHandlerWithItsNameAndItsInterface) {
  ActorPort port;
  EXPECT_EQ(port.world.traced("void Macsec::MkaActorSm::handleInitialized(): Actor 6162 on "
                              "Ethernet1"),
            1u);
}

}  // namespace
}  // namespace Macsec
