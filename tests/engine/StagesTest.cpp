#include "engine/Stages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "controlled_port/KeyStage.h"
#include "tests/support/KeyNames.h"
#include "tests/support/Told.h"

namespace Macsec {
namespace {

using Support::kCkn;
using Support::Switch;
using ::testing::ElementsAre;

/// Two switches, of which the first is key server; takes down each stage that it comes to.
class Stages : public ::testing::Test {
 protected:
  Stages() {
    a.world.delays = {0};
    b.world.delays = {1};
    told.then = [this](char const*) { look(); };
    a.start(Support::key(kCkn), Cak(), 10);
    b.start(Support::key(kCkn), Cak(), 20);
  }
  void look() {
    if (auto cpStatus = a.cpStatus()) take(keys, nameOf(stageOf(*cpStatus)));
    auto const actor = a.actor(kCkn);
    if (!actor) return;
    if (auto member = b.actor(kCkn)) take(peers, nameOf(stageOf(*actor, member->msgId())));
  }
  void lookAtGuard() {
    auto const keyServer = a.actorSm(kCkn)->keyServerSm();
    if (keyServer) take(guard, nameOf(stageOf(*keyServer)));
  }
  void runUntil(double end) {
    while (segment.now() < end) {
      segment.runUntil(segment.now() + 0.25);
      look();
      lookAtGuard();
    }
  }
  static void take(std::vector<std::string>& stages, char const* stage) {
    if (stages.empty() || stages.back() != stage) stages.push_back(stage);
  }

  Switch a{1};
  Switch b{2};
  Support::Told told{a};
  Support::Segment segment{{&a, &b}};
  std::vector<std::string> keys, peers, guard;
};

TEST_F(Stages, OfTheFirstKeyAndOfOneThatFollowsAreThoseOfTheDrawing) {
  runUntil(12);
  EXPECT_THAT(keys, ElementsAre("Empty", "RxProgrammed", "RxUp", "TxProgrammed", "TxUp", "Old"));
  keys = {"Old"};
  a.in([&] { a.actor(kCkn)->llpnExhaustionInc(1); });
  runUntil(24);
  EXPECT_THAT(keys, ElementsAre("Old", "RxProgrammed", "RxUp", "TxProgrammed", "TxUp", "Old"));
}

TEST_F(Stages, OfAMemberAreThoseOfTheDrawing) {
  runUntil(12);
  segment.isLost = [](auto&, auto&) { return true; };
  runUntil(30);
  EXPECT_THAT(peers, ElementsAre("Unknown", "Live", "Unknown"));
}

TEST_F(Stages, OfTheGuardAreThoseOfTheDrawing) {
  runUntil(24);
  EXPECT_THAT(guard, ElementsAre("Guard armed, newSak", "Guard armed", "Guard disarmed"));
}

TEST(StageOf, ANewlyHeardMemberIsPotential) {
  auto const actor = MkaActorStatus::MkaActorStatusIs(kCkn);
  EXPECT_EQ(stageOf(*actor, "b1"), PeerStage::unknown);
  actor->potentialPeerIs("b1");
  EXPECT_EQ(stageOf(*actor, "b1"), PeerStage::potential);
  actor->livePeerIs("b1");
  EXPECT_EQ(stageOf(*actor, "b1"), PeerStage::live);
}

}  // namespace
}  // namespace Macsec
