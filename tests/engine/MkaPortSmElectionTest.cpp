#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Port.h"

namespace Macsec {
namespace {

using Support::key;
using Support::Port;
using Support::sak;
using ::testing::ElementsAre;

std::vector<std::string> inUse(Port const& port) {
  std::vector<std::string> names;
  for (auto const& log : port.world.logs) {
    if (log.name.find("_IN_USE") != std::string::npos) {
      names.push_back(log.name + " " + log.arguments[0]);
    }
  }
  return names;
}

TEST(PrincipalElection, APrimaryKeyServerThatSucceedsIsPrincipalAtOnce) {
  Port port;
  port.succeed(Port::kPrimary, true);
  EXPECT_EQ(port.principal(), Port::kPrimary);
  EXPECT_TRUE(port.actor(Port::kPrimary)->principal());
  EXPECT_THAT(inUse(port), ElementsAre("MKA_KEY_IN_USE 6162"));
  Vesk::LogHandle const& handle = *port.world.handles.back();
  EXPECT_EQ(static_cast<int>(handle.severity()), 5);
  EXPECT_STREQ(handle.format(), "Configured key %s currently in use on interface %s");
  EXPECT_STREQ(handle.explanation(),
               "Configured primary key is the operational key on the interface.");
  EXPECT_STREQ(handle.recommendedAction(), Vesk::NoActionRequired);
  EXPECT_EQ(handle.interval(), 0.0);
  EXPECT_EQ(handle.reserved(), 1.0);
}

TEST(PrincipalElection, TheMessageGoesOutBeforeTheActorIsMarked) {
  Port port;
  port.world.traces.clear();
  struct Watch final : Vesk::Reactor<MkaActorStatus const, Port, Watch> {
    using Reactor::Reactor;
    void onPrincipal() override { loggedBefore = owner().world.logged("MKA_KEY_IN_USE"); }
    size_t loggedBefore = 99;
  };
  auto watch = Vesk::make<Watch>(port, port.actor(Port::kPrimary));
  port.succeed(Port::kPrimary, true);
  EXPECT_EQ(watch->loggedBefore, 1u);
  Vesk::retire(watch);
}

TEST(PrincipalElection, ASuccessThatIsNotKeyServerWaitsForItsSak) {
  Port port;
  port.succeed(Port::kPrimary, false);
  EXPECT_EQ(port.principal(), "");
  EXPECT_EQ(port.world.traced(": Actor 6162 is not the elected key server on Ethernet1. Bailing"),
            1u);
  port.distSakIs(Port::kPrimary, sak());
  EXPECT_EQ(port.principal(), Port::kPrimary);
}

TEST(PrincipalElection, NothingElectsAPrincipalOnAChangeOfElectedSelf) {
  Port port;
  port.succeed(Port::kPrimary, false);
  port.in([&] { port.actor(Port::kPrimary)->electedSelfIs(true); });
  port.runUntil(100);
  EXPECT_EQ(port.principal(), "");
}

TEST(PrincipalElection, AFallbackKeyServerAloneWaitsOutItsPeriod) {
  Port port;
  port.succeed(Port::kFallback, true);
  EXPECT_TRUE(port.portSm()->defaultActorTimer().isArmed());
  port.runUntil(29.999);
  EXPECT_EQ(port.principal(), "");
}

TEST(PrincipalElection, TheFallbackKeyServerIsPrincipalAfterThirtySeconds) {
  Port port{Cak(), key(Port::kFallback)};
  port.in([&] { port.status->mkaLifeTimeIs(255); });
  port.world.time = 0;
  port.in([&] {
    port.actor(Port::kFallback)->livePeerIs("b1b2b3b4b5b6b7b8b9babbbc")->timeStampIs(1000);
    port.actor(Port::kFallback)->keyServerIs(Sci(Lumo::EthAddr({2}), 1));
  });
  port.succeed(Port::kFallback, true);
  port.runUntil(29.999);
  EXPECT_EQ(port.principal(), "");
  port.runUntil(30);
  EXPECT_EQ(port.principal(), Port::kFallback);
  EXPECT_THAT(inUse(port), ElementsAre("MKA_FALLBACK_KEY_IN_USE 6364"));
  EXPECT_FALSE(port.portSm()->defaultActorTimer().isArmed());
  Vesk::LogHandle const& handle = *port.world.handles[0];
  EXPECT_EQ(static_cast<int>(handle.severity()), 4);
  EXPECT_STREQ(handle.format(), "Configured fallback key %s currently in use on interface %s");
  EXPECT_STREQ(handle.explanation(),
               "The fallback key is the operational key on the interface. This could indicate a "
               "problem with the configured primary key.");
  EXPECT_STREQ(handle.recommendedAction(), "Check the primary key configuration.");
}

TEST(PrincipalElection, APrimaryThatSucceedsDuringTheWaitWinsAndEndsIt) {
  Port port;
  port.succeed(Port::kFallback, true);
  port.succeed(Port::kPrimary, true);
  EXPECT_EQ(port.principal(), Port::kPrimary);
  EXPECT_FALSE(port.portSm()->defaultActorTimer().isArmed());
}

TEST(PrincipalElection, ASecondSuccessOfAFallbackDuringTheWaitEndsTheWait) {
  Port port;
  port.succeed(Port::kFallback, true);
  port.in([&] {
    port.actor(Port::kFallback)->successIs(false);
    port.actor(Port::kFallback)->successIs(true);
  });
  EXPECT_EQ(port.principal(), Port::kFallback);
  EXPECT_FALSE(port.portSm()->defaultActorTimer().isArmed());
}

TEST(PrincipalElection, AFallbackKeyServerBesideAPrincipalElectsWithNoWait) {
  Port port;
  port.succeed(Port::kPrimary, true);
  port.world.traces.clear();
  port.succeed(Port::kFallback, true);
  EXPECT_EQ(port.world.traced(": Re-evaluating principal actor on Ethernet1"), 1u);
  EXPECT_FALSE(port.portSm()->defaultActorTimer().isArmed());
  EXPECT_EQ(port.principal(), Port::kPrimary);
}

TEST(PrincipalElection, AFallbackThatReceivesASakIsPrincipalWithNoWait) {
  Port port;
  port.distSakIs(Port::kFallback, sak());
  EXPECT_EQ(port.principal(), Port::kFallback);
  EXPECT_THAT(inUse(port), ElementsAre("MKA_FALLBACK_KEY_IN_USE 6364"));
}

TEST(PrincipalElection, ASakForAnotherActorUnmarksTheOldPrincipalFirst) {
  Port port;
  port.distSakIs(Port::kFallback, sak());
  struct Watch final : Vesk::Reactor<MkaActorStatus const, Port, Watch> {
    using Reactor::Reactor;
    void onPrincipal() override { otherWasMarked = owner().actor(Port::kFallback)->principal(); }
    bool otherWasMarked = true;
  };
  auto watch = Vesk::make<Watch>(port, port.actor(Port::kPrimary));
  port.distSakIs(Port::kPrimary, sak(1));
  EXPECT_FALSE(watch->otherWasMarked);
  EXPECT_EQ(port.principal(), Port::kPrimary);
  EXPECT_FALSE(port.actorSm(Port::kFallback)->cpSm());
  Vesk::retire(watch);
}

TEST(PrincipalElection, AReElectedActorIsNotAnnouncedAgain) {
  Port port;
  port.succeed(Port::kPrimary, true);
  port.in([&] { port.portSm()->doElectPrincipalActor(); });
  EXPECT_THAT(inUse(port), ElementsAre("MKA_KEY_IN_USE 6162"));
}

TEST(PrincipalElection, AKeyServerThatFailsIsReplacedByAnElection) {
  Port port;
  port.succeed(Port::kPrimary, true);
  port.succeed(Port::kFallback, true);
  port.fail(Port::kPrimary);
  EXPECT_EQ(port.principal(), Port::kFallback);
  EXPECT_THAT(inUse(port), ElementsAre("MKA_KEY_IN_USE 6162", "MKA_FALLBACK_KEY_IN_USE 6364"));
}

TEST(PrincipalElection, AKeyServerThatFailsAloneLeavesNoPrincipal) {
  Port port;
  port.succeed(Port::kPrimary, true);
  port.fail(Port::kPrimary);
  EXPECT_EQ(port.principal(), "");
  EXPECT_FALSE(port.actor(Port::kPrimary)->principal());
  EXPECT_EQ(port.world.traced(": Failed to pick a principal actor on Ethernet1"), 1u);
  EXPECT_EQ(port.world.traced(": Cleaning up old principal actor 6162 on Ethernet1"), 1u);
  port.succeed(Port::kPrimary, true);
  EXPECT_THAT(inUse(port), ElementsAre("MKA_KEY_IN_USE 6162", "MKA_KEY_IN_USE 6162"));
}

TEST(PrincipalElection, AFollowerThatFailsLeavesNoPrincipalEvenBesideASuccessfulFallback) {
  Port port;
  port.succeed(Port::kPrimary, false);
  port.distSakIs(Port::kPrimary, sak());
  port.succeed(Port::kFallback, false);
  port.fail(Port::kPrimary);
  EXPECT_EQ(port.principal(), "");
  EXPECT_FALSE(port.actor(Port::kFallback)->principal());
}

TEST(PrincipalElection, AFailureOfThePrincipalStopsTheSweep) {
  Port port;
  port.succeed(Port::kPrimary, false);
  port.distSakIs(Port::kPrimary, sak());
  EXPECT_TRUE(port.portSm()->actorDeletionTimer().isArmed());
  port.fail(Port::kPrimary);
  EXPECT_FALSE(port.portSm()->actorDeletionTimer().isArmed());
}

TEST(PrincipalElection, AFailureOfAnotherActorChangesNothing) {
  Port port;
  port.succeed(Port::kPrimary, true);
  port.succeed(Port::kFallback, false);
  port.distSakIs(Port::kPrimary, sak());
  port.fail(Port::kFallback);
  EXPECT_EQ(port.principal(), Port::kPrimary);
  EXPECT_TRUE(port.portSm()->actorDeletionTimer().isArmed());
}

TEST(PrincipalElection, TheNextAssociationNumberRunsBehindTheDistributedOne) {
  Port port;
  for (uint8_t an : std::initializer_list<uint8_t>{0, 1, 2, 3, 0}) {
    port.distSakIs(Port::kPrimary, sak(an, an + 1u));
    EXPECT_EQ(port.portStatus()->anOfNextKey().value(), (an + 1) % 4);
  }
}

TEST(PrincipalElection, AnEmptySakStillArmsTheSweepAndKeepsTheNumber) {
  Port port;
  port.distSakIs(Port::kPrimary, sak(2));
  port.in([&] { port.portSm()->handleActorDeletion(); });
  EXPECT_FALSE(port.portSm()->actorDeletionTimer().isArmed());
  port.distSakIs(Port::kPrimary, Sak());
  EXPECT_TRUE(port.portSm()->actorDeletionTimer().isArmed());
  EXPECT_EQ(port.portStatus()->anOfNextKey().value(), 3);
}

TEST(PrincipalElection, AConfiguredPrimaryComesBeforeAnOperationalOne) {
  Port port(key(Port::kPrimary), Cak());
  port.succeed(Port::kPrimary, true);
  port.keyIs(key("6566"));
  port.succeed("6566", true);
  EXPECT_EQ(port.principal(), "6566");
  port.fail("6566");
  EXPECT_EQ(port.principal(), Port::kPrimary);
  EXPECT_EQ(port.world.traced(": Picking operational primary actor 6162 as principal actor on "
                              "Ethernet1"),
            1u);
}

TEST(PrincipalElection, TheLastOperationalActorInTheOrderOfTheCollectionIsKept) {
  Port port{Cak(), Cak()};
  port.in([&] {
    for (char const* ckn : {"aa", "bb", "cc"}) {
      port.portStatus()->actorStatusIs(ckn)->successIs(true);
    }
  });
  Vesk::String8 last;
  for (MkaActorStatus& actor : port.portStatus()->actorStatus()) last = actor.ckn();
  port.in([&] { port.portSm()->doElectPrincipalActor(); });
  EXPECT_EQ(port.principal(), last);
}

TEST(PrincipalElection, WithOneNameForBothKeysOnlyTheConfiguredBranchesPickTheActor) {
  Port port(key(Port::kPrimary), key(Port::kPrimary));
  port.succeed(Port::kPrimary, true);
  EXPECT_EQ(port.world.traced(": Picking operational"), 0u);
  EXPECT_EQ(port.world.traced(": Picking configured primary actor 6162"), 1u);
}

// Debug builds alone look.
TEST(PrincipalElection, APrincipalThatThePortDoesNotKnowEndsADebugProcess) {
  Port port;
  port.in([&] { port.actor(Port::kFallback)->principalIs(true); });
  EXPECT_DEBUG_DEATH(
      port.keyIs(key("6566")),
      "MkaPortSm::checkPrincipal\\(\\) const: Assertion "
      "`!actor.principal\\(\\) \\|\\| actor.name\\(\\) == principalActorCkn_' failed");
}

}  // namespace
}  // namespace Macsec
