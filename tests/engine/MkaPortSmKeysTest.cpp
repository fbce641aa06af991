#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Port.h"

namespace Macsec {
namespace {

using Support::key;
using Support::kOtherCak;
using Support::Port;
using ::testing::ElementsAre;

size_t placeOf(Port const& port, std::string const& text) {
  for (size_t i = 0; i < port.world.traces.size(); ++i) {
    if (port.world.traces[i].find(text) != std::string::npos) return i;
  }
  return SIZE_MAX;
}

TEST(KeysOfAPort, BothKeysBecomeActorsTheFallbackFirst) {
  Port port;
  EXPECT_FALSE(port.actor(Port::kPrimary)->defaultActor());
  EXPECT_TRUE(port.actor(Port::kFallback)->defaultActor());
  EXPECT_TRUE(port.actorSm(Port::kPrimary));
  EXPECT_TRUE(port.actorSm(Port::kFallback));
  EXPECT_LT(placeOf(port, ": Creating actor 6364"), placeOf(port, ": Creating actor 6162"));
}

TEST(KeysOfAPort, OnlyThePrimaryKeyIsAnnounced) {
  Port port;
  ASSERT_EQ(port.world.logs.size(), 1u);
  EXPECT_EQ(port.world.logs[0].text,
            "Connectivity Association for CKN 6162 created on interface Ethernet1");
  Vesk::LogHandle const& handle = *port.world.handles[0];
  EXPECT_STREQ(handle.name(), "MKA_CA_CREATED");
  EXPECT_EQ(static_cast<int>(handle.severity()), 6);
  EXPECT_STREQ(handle.format(), "Connectivity Association for CKN %s created on interface %s");
  EXPECT_STREQ(handle.explanation(),
               "CAK-CKN is configured on the interface for security relationship       with other "
               "peers");
  EXPECT_STREQ(handle.recommendedAction(), Vesk::NoActionRequired);
  EXPECT_EQ(handle.interval(), 120.0);
  EXPECT_EQ(handle.reserved(), 1.0);
}

TEST(KeysOfAPort, TheHandlerTracesItsFullSignature) {
  Port port;
  EXPECT_EQ(placeOf(port, "void Macsec::MkaPortSm::handleKey(): Processing new key ") != SIZE_MAX,
            true);
}

TEST(KeysOfAPort, AnotherEncodingOfTheSameKeyRebuildsNothing) {
  Port port;
  auto const sm = port.actorSm(Port::kPrimary);
  auto const status = port.actor(Port::kPrimary);
  port.keyIs(key(Port::kPrimary));
  EXPECT_EQ(port.actorSm(Port::kPrimary), sm);
  EXPECT_EQ(port.actor(Port::kPrimary), status);
  EXPECT_EQ(port.world.logged("MKA_CA_CREATED"), 1u);
}

TEST(KeysOfAPort, AnotherKeyUnderTheSameNameRebuildsTheActor) {
  Port port;
  auto const sm = port.actorSm(Port::kPrimary);
  auto const status = port.actor(Port::kPrimary);
  port.keyIs(key(Port::kPrimary, kOtherCak));
  EXPECT_NE(port.actorSm(Port::kPrimary), sm);
  EXPECT_NE(port.actor(Port::kPrimary), status);
}

TEST(KeysOfAPort, AKeyThatDoesNotDecodeIsAnotherThanOneThatDoesNotEither) {
  Port port;
  port.keyIs(Cak(Port::kPrimary, "w1:00"));
  auto const status = port.actor(Port::kPrimary);
  port.keyIs(Cak(Port::kPrimary, "w1:01"));
  EXPECT_NE(port.actor(Port::kPrimary), status);
  EXPECT_EQ(port.actor(Port::kPrimary)->cak(), "w1:01");
}

TEST(KeysOfAPort, AnElectionFollowsTheRebuildOfAPrincipalKeyServer) {
  Port port;
  port.succeed(Port::kPrimary, true);
  port.succeed(Port::kFallback, true);
  ASSERT_EQ(port.principal(), Port::kPrimary);
  port.keyIs(key(Port::kPrimary, kOtherCak));
  EXPECT_EQ(port.principal(), Port::kFallback);
  EXPECT_EQ(port.world.logged("MKA_FALLBACK_KEY_IN_USE"), 1u);
}

TEST(KeysOfAPort, NoElectionFollowsTheLossOfAPrincipalThatWasNotKeyServer) {
  Port port;
  port.succeed(Port::kFallback, true);
  port.distSakIs(Port::kPrimary, Support::sak());
  ASSERT_EQ(port.principal(), Port::kPrimary);
  port.keyIs(Cak());
  EXPECT_EQ(port.principal(), "");
  EXPECT_FALSE(port.actor(Port::kPrimary));
  EXPECT_TRUE(port.actor(Port::kFallback));
}

TEST(KeysOfAPort, DeletingThePrimaryKeyOfAPrincipalKeyServerElectsTheFallback) {
  Port port;
  port.succeed(Port::kPrimary, true);
  port.succeed(Port::kFallback, true);
  port.keyIs(Cak());
  EXPECT_EQ(port.principal(), Port::kFallback);
  EXPECT_FALSE(port.actorSm(Port::kPrimary));
}

TEST(KeysOfAPort, DeletingBothKeysLeavesNoActorAndNoPrincipal) {
  Port port;
  port.succeed(Port::kPrimary, true);
  port.keyIs(Cak());
  port.defaultKeyIs(Cak());
  EXPECT_TRUE(port.portStatus()->actorStatus().empty());
  EXPECT_TRUE(port.portSm()->mkaActorSm().empty());
  EXPECT_EQ(port.principal(), "");
}

TEST(KeysOfAPort, AnOlderActorThatIsPrincipalStaysUntilTheSweepFindsItDisplaced) {
  Port port(key(Port::kPrimary), Cak());
  port.distSakIs(Port::kPrimary, Support::sak());
  port.keyIs(key("6566"));
  EXPECT_TRUE(port.actorSm(Port::kPrimary));
  EXPECT_TRUE(port.actorSm("6566"));
  port.distSakIs("6566", Support::sak(1, 2));
  EXPECT_EQ(port.principal(), "6566");
  EXPECT_TRUE(port.actorSm(Port::kPrimary));
  port.runUntil(port.world.time + 7.999);
  EXPECT_TRUE(port.actorSm(Port::kPrimary));
  port.runUntil(port.world.time + 0.001);
  EXPECT_FALSE(port.actorSm(Port::kPrimary));
  EXPECT_FALSE(port.actor(Port::kPrimary));
  EXPECT_FALSE(port.portSm()->actorDeletionTimer().isArmed());
}

TEST(KeysOfAPort, AnOlderActorThatIsNotPrincipalGoesAtOnce) {
  Port port;
  port.keyIs(key("6566"));
  EXPECT_FALSE(port.actor(Port::kPrimary));
  EXPECT_FALSE(port.actorSm(Port::kPrimary));
  EXPECT_TRUE(port.actorSm("6566"));
  EXPECT_TRUE(port.actorSm(Port::kFallback));
}

TEST(KeysOfAPort, TheSweepSparesThePrincipalAndTheConfiguredActors) {
  Port port;
  port.distSakIs(Port::kFallback, Support::sak());
  port.defaultKeyIs(key("6768"));
  port.in([&] { port.portSm()->handleActorDeletion(); });
  EXPECT_TRUE(port.actor(Port::kPrimary));
  EXPECT_TRUE(port.actor(Port::kFallback));
  EXPECT_TRUE(port.actor("6768"));
}

TEST(KeysOfAPort, AFallbackKeyUnderThePrimaryNameReplacesThePrimaryActor) {
  Port port(key(Port::kPrimary), Cak());
  auto const sm = port.actorSm(Port::kPrimary);
  port.defaultKeyIs(key(Port::kPrimary));
  EXPECT_NE(port.actorSm(Port::kPrimary), sm);
  EXPECT_TRUE(port.actor(Port::kPrimary)->defaultActor());
}

TEST(KeysOfAPort, AnEmptyNameMakesAnActorWithoutAName) {
  Port port(key(""), Cak());
  EXPECT_TRUE(port.actorSm(""));
}

TEST(KeysOfAPort, TheEndOfThePortDeletesActorsFirstAndThenEmptiesTheControlledPort) {
  Port port;
  auto const cpStatus = port.cpStatus();
  port.in([&] {
    cpStatus->oldSakContextIs(SakContext(Support::sak(), 0, true, true, true, true));
    cpStatus->latestSakContextIs(SakContext(Support::sak(1), 0, true, true, true, true));
    cpStatus->txSakIs(Support::sak());
    cpStatus->rxSakIs(Support::sak());
    cpStatus->controlledPortEnabledIs(true);
  });
  struct Writes final : Vesk::Reactor<CpStatus const, Port, Writes> {
    using Reactor::Reactor;
    void onControlledPortEnabled() override { order.push_back("enabled"); }
    void onOldSakContext() override { order.push_back("old"); }
    void onLatestSakContext() override { order.push_back("latest"); }
    void onTxSak() override { order.push_back("tx"); }
    void onRxSak(AssociationNumber const&) override { order.push_back("rx"); }
    std::vector<std::string> order;
  };
  auto writes = Vesk::make<Writes>(port, cpStatus);
  port.world.traces.clear();
  port.in([&] { port.ethDir->intfStatus(port.intfId)->linkStatusIs(Interface::linkDown); });
  EXPECT_THAT(writes->order, ElementsAre("old", "latest", "tx", "rx", "enabled"));
  EXPECT_EQ(port.world.traced("void Macsec::MkaPortSm::handleCleanUp()Deleting actor "), 2u);
  Vesk::retire(writes);
}

TEST(KeysOfAPort, ARestartDeletesActorsWithoutAKeyAndTakesUpThePrincipal) {
  Support::Switch s{1};
  s.in([&] {
    auto portStatus = s.status->portStatusIs(s.intfId);
    portStatus->actorStatusIs("9999");
    auto actor = portStatus->actorStatusIs(Port::kPrimary);
    actor->msgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
    actor->cakIs(key(Port::kPrimary).cak());
    actor->principalIs(true);
  });
  s.start(key(Port::kPrimary));
  EXPECT_FALSE(s.actor("9999"));
  EXPECT_EQ(s.portSm()->principalActorCkn(), Port::kPrimary);
  EXPECT_EQ(s.actor(Port::kPrimary)->msgId(), "a1a2a3a4a5a6a7a8a9aaabac");
  EXPECT_TRUE(s.actorSm(Port::kPrimary)->keyServerSm());
  EXPECT_TRUE(s.actorSm(Port::kPrimary)->cpSm());
}

}  // namespace
}  // namespace Macsec
