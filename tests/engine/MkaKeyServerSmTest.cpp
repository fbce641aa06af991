#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/KeyDerivation.h"
#include "tests/support/Peer.h"

namespace Macsec {
namespace {

using Support::ActorPort;
using Support::ActorWrites;
using Support::Peer;
using ::testing::ElementsAre;

constexpr double kNever = Zorn::never;

/// A key server's port. The actor is made principal by hand, so that nothing else moves.
class KeyServer : public ::testing::Test {
 protected:
  void begin(bool electedSelf) {
    port.in([&] {
      port.status().electedSelfIs(electedSelf);
      port.status().principalIs(true);
    });
  }
  MkaKeyServerSm& sm() { return *port.sm().keyServerSm(); }
  MkaActorStatus& status() { return port.status(); }
  void join(char const* id) {
    port.in([&] { status().livePeerIs(id); });
  }
  void leave(char const* id) {
    port.in([&] { status().livePeerDel(id); });
  }
  void guardExpires() {
    port.in([&] { sm().handleMkaLifetimeTimerExpiry(); });
  }
  /// A key server with the guard disarmed and no peer.
  void beginIdle() {
    begin(true);
    guardExpires();
  }
  size_t created() const { return port.world.logged("MKA_SAK_CREATED"); }
  size_t traced(std::string const& decision) const {
    return port.world.traced(decision + "Ethernet1 for ckn 6162");
  }
  static constexpr char const* kOne = "b1b2b3b4b5b6b7b8b9babbbc";
  static constexpr char const* kOther = "c1c2c3c4c5c6c7c8c9cacbcc";
  ActorPort port;
};

TEST_F(KeyServer, AFollowerHasBothTimersDisarmed) {
  port.in([&] {
    port.intfStatus()->reKeyPeriodIs(30);
    status().newSakIs(true);
  });
  begin(false);
  EXPECT_TRUE(sm().initialized());
  EXPECT_FALSE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), kNever);
  EXPECT_EQ(sm().reKeyTimer().time(), kNever);
}

TEST_F(KeyServer, MakesItsFirstKeyOneLifetimeAfterItsStart) {
  port.in([&] { port.intfStatus()->reKeyPeriodIs(30); });
  begin(true);
  EXPECT_TRUE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), 6);
  EXPECT_EQ(sm().reKeyTimer().time(), 30);
  join(kOne);
  EXPECT_EQ(created(), 0u);
  EXPECT_TRUE(status().newSak());
  port.world.time = 6;
  guardExpires();
  EXPECT_EQ(created(), 1u);
  EXPECT_FALSE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), 12);
  EXPECT_EQ(traced("Generating new SAK upon timer expiry on intfId "), 1u);
}

TEST_F(KeyServer, MakesAKeyAtOnceForTheFirstPeerWhenTheGuardIsDisarmed) {
  beginIdle();
  port.world.time = 50;
  join(kOne);
  EXPECT_EQ(created(), 1u);
  EXPECT_FALSE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), 56);
  EXPECT_EQ(traced("New live peer b1b2b3b4b5b6b7b8b9babbbc added on intfId "), 1u);
}

TEST_F(KeyServer, WithdrawsAKeyThatIsNotInUseWhenAnotherPeerJoins) {
  beginIdle();
  join(kOne);
  port.world.time = 1;
  join(kOther);
  EXPECT_EQ(status().distSak(), Sak());
  EXPECT_TRUE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), 6);
  guardExpires();
  EXPECT_EQ(status().distSak().keyNum(), 2u);
}

TEST_F(KeyServer, KeepsAKeyInUseWhenAnotherPeerJoins) {
  beginIdle();
  join(kOne);
  Sak const inUse = status().distSak();
  port.in([&] { status().sakTransmitIs(true); });
  join(kOther);
  EXPECT_EQ(status().distSak(), inUse);
  EXPECT_TRUE(status().newSak());
  guardExpires();
  EXPECT_FALSE(status().sakTransmit());
  EXPECT_EQ(status().distSak().keyNum(), 2u);
}

TEST_F(KeyServer, KeepsAKeyInUseWhenTheLastPeerLeaves) {
  beginIdle();
  join(kOne);
  Sak const inUse = status().distSak();
  port.in([&] {
    status().sakTransmitIs(true);
    status().newSakIs(true);
  });
  leave(kOne);
  EXPECT_EQ(status().distSak(), inUse);
  EXPECT_TRUE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), kNever);
  EXPECT_EQ(traced("Live peer b1b2b3b4b5b6b7b8b9babbbc being deleted on intfId "), 1u);
  EXPECT_EQ(
      port.world.traced("Live peer list is empty. Disarming timer for sakGeneration on intfId "
                        "Ethernet1 for ckn 6162"),
      2u);
}

TEST_F(KeyServer, WithdrawsAnUnusedKeyWhenTheLastPeerLeaves) {
  beginIdle();
  join(kOne);
  leave(kOne);
  EXPECT_EQ(status().distSak(), Sak());
}

TEST_F(KeyServer, DisarmsTheGuardWhenNothingIsWanted) {
  beginIdle();
  join(kOne);
  guardExpires();
  EXPECT_EQ(created(), 1u);
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), kNever);
  EXPECT_EQ(traced("Not generating new SAK upon timer expiry. Disarming timer on intfId "), 1u);
}

TEST_F(KeyServer, AGuardThatExpiresWithoutPeersForgetsTheWishAndTheUnusedKey) {
  begin(true);
  port.in([&] { status().distSakIs(Support::sak()); });
  guardExpires();
  EXPECT_FALSE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), kNever);
  EXPECT_EQ(status().distSak(), Sak());
}

TEST_F(KeyServer, TheGuardDoesNotAskWhetherTheActorIsElected) {
  begin(false);
  join(kOne);
  port.in([&] { status().newSakIs(true); });
  guardExpires();
  EXPECT_EQ(created(), 1u);
}

TEST_F(KeyServer, AFollowerBailsOut) {
  begin(false);
  join(kOne);
  EXPECT_EQ(traced("Not the keyServer. Bailing on intfId "), 1u);
  port.in([&] {
    status().llpnExhaustionInc(1);
    port.intfStatus()->reKeyPeriodIs(30);
  });
  EXPECT_EQ(traced("not the keyServer. Bailing on intfId "), 2u);
  EXPECT_EQ(created(), 0u);
  EXPECT_EQ(sm().reKeyTimer().time(), kNever);
}

TEST_F(KeyServer, GainingTheRoleArmsBothTimersAndLosingItWithdrawsTheKey) {
  begin(false);
  port.in([&] { port.intfStatus()->reKeyPeriodIs(30); });
  port.world.time = 100;
  port.in([&] { status().electedSelfIs(true); });
  EXPECT_TRUE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), 106);
  EXPECT_EQ(sm().reKeyTimer().time(), 130);
  EXPECT_EQ(traced("Non-key-server changed to key server on intfId "), 1u);
  join(kOne);
  guardExpires();
  port.in([&] {
    status().sakTransmitIs(true);
    status().electedSelfIs(false);
  });
  EXPECT_FALSE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), kNever);
  EXPECT_EQ(sm().reKeyTimer().time(), kNever);
  EXPECT_EQ(status().distSak(), Sak());
  EXPECT_EQ(status().keyNum(), 1u);
  EXPECT_EQ(traced("Key server changed to non-key-server on intfId "), 1u);
}

TEST_F(KeyServer, ExhaustionMakesAKeyInsideTheGuardInterval) {
  beginIdle();
  join(kOne);
  port.world.time = 2;
  port.in([&] { status().llpnExhaustionInc(1); });
  EXPECT_EQ(status().keyNum(), 2u);
  EXPECT_FALSE(status().newSak());
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), 8);
}

TEST_F(KeyServer, ExhaustionWithoutPeersDisarmsTheGuard) {
  begin(true);
  port.in([&] {
    status().distSakIs(Support::sak());
    status().llpnExhaustionInc(1);
  });
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), kNever);
  EXPECT_EQ(status().distSak(), Sak());
  EXPECT_TRUE(status().newSak());
}

TEST_F(KeyServer, AChangedRekeyPeriodCountsFromNow) {
  begin(true);
  EXPECT_EQ(sm().reKeyTimer().time(), kNever);
  port.world.time = 4;
  port.in([&] { port.intfStatus()->reKeyPeriodIs(30); });
  EXPECT_EQ(sm().reKeyTimer().time(), 34);
  port.in([&] { port.intfStatus()->reKeyPeriodIs(0); });
  EXPECT_EQ(sm().reKeyTimer().time(), kNever);
}

TEST_F(KeyServer, RekeysPeriodicallyWhileThereArePeers) {
  port.in([&] { port.intfStatus()->reKeyPeriodIs(30); });
  beginIdle();
  join(kOne);
  port.world.time = 30;
  port.in([&] { sm().handleReKeyTimerExpiry(); });
  EXPECT_EQ(status().keyNum(), 2u);
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), 36);
  EXPECT_EQ(sm().reKeyTimer().time(), 60);
}

TEST_F(KeyServer, ARekeyWithoutPeersEndsPeriodicRekeying) {
  port.in([&] { port.intfStatus()->reKeyPeriodIs(3); });
  begin(true);
  port.in([&] { status().distSakIs(Support::sak()); });
  port.runUntil(100);
  EXPECT_EQ(created(), 0u);
  EXPECT_EQ(sm().reKeyTimer().time(), 3);
  EXPECT_EQ(sm().mkaPeriodicTimer().time(), kNever);
  EXPECT_EQ(status().distSak(), Support::sak());
  EXPECT_EQ(port.world.traced("Live peer list is empty. Disarming mkaPeriodicTimer only on intfId "
                              "Ethernet1 for ckn 6162"),
            1u);
  port.in([&] { port.intfStatus()->reKeyPeriodIs(5); });
  EXPECT_EQ(sm().reKeyTimer().time(), 105);
}

TEST_F(KeyServer, WritesTransmitFalseThenTheKeyThenItsNumber) {
  beginIdle();
  join(kOne);
  port.in([&] { status().sakTransmitIs(true); });
  auto writes = Vesk::make<ActorWrites>(port, port.actor("6162"));
  port.in([&] { sm().generateNewSak(); });
  EXPECT_THAT(writes->order, ElementsAre("sakTransmit", "distSak", "keyNum"));
  Vesk::retire(writes);
}

TEST_F(KeyServer, DerivesTheKeyFromNoncePeersAndNumber) {
  begin(true);
  port.in([&] {
    status().msgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
    status().livePeerIs("a1a2a3a4a5a6a7a8a9aaabac");
    for (uint8_t n = 0; n < 16; ++n) port.world.nextRandom.push_back(n);
    sm().generateNewSak();
    Vesk::String8 expected;
    Vesk::String8 const context =
        "000102030405060708090a0b0c0d0e0fa1a2a3a4a5a6a7a8a9aaabac00000001";
    deriveSak(reinterpret_cast<unsigned char const*>(Support::kCak),
              reinterpret_cast<unsigned char const*>(context.charPtr()), 128, expected);
    EXPECT_EQ(WardcodeLib::doDecodeKey(status().distSak().key()), expected);
  });
  EXPECT_EQ(status().distSak().keyMsgId(), "a1a2a3a4a5a6a7a8a9aaabac");
  EXPECT_EQ(status().distSak().salt(), "");
}

TEST_F(KeyServer, NumbersItsKeysOneAfterTheOther) {
  beginIdle();
  join(kOne);
  for (uint32_t n = 2; n < 7; ++n) {
    port.in([&] { sm().generateNewSak(); });
    EXPECT_EQ(status().keyNum(), n);
    EXPECT_EQ(status().distSak().keyNum(), n);
    EXPECT_EQ(status().distSak().an(), AssociationNumber((n - 1) % 4));
  }
}

TEST_F(KeyServer, AnnouncesEachKey) {
  beginIdle();
  port.in([&] {
    port.emulator = nullptr;
    status().msgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
  });
  join(kOne);
  EXPECT_EQ(port.world.logs.back().arguments,
            (std::vector<std::string>{"a9aaabac", "1", "Ethernet1"}));
  EXPECT_EQ(port.world.logs.back().text,
            "New SAK created with key id ending in a9aaabac:1 on interface Ethernet1");
  Support::expectHandle(*port.world.handles.back(), "MKA_SAK_CREATED", 6,
                        "New SAK created with key id ending in %s:%s on interface %s",
                        "New Secure Association established. Reasons could be : Rekey Period "
                        "Expiry,       New KeyServer or LLPN Exhaustion",
                        120.0);
  EXPECT_EQ(port.world.traced("void Macsec::MkaKeyServerSm::generateNewSak()"), 1u);
}

TEST_F(KeyServer, AKeyMayBeAnnouncedBeforeTheSessionOfThePeerThatItIsFor) {
  Peer first(2), second(3);
  port.live(first);
  port.runUntil(5);
  port.live(first);
  port.runUntil(10);
  port.live(first);
  port.runUntil(13);
  ASSERT_EQ(created(), 1u);
  ASSERT_EQ(sm().mkaPeriodicTimer().time(), kNever);
  port.live(second);
  auto const names = port.world.logNames();
  EXPECT_EQ(names[names.size() - 2], "MKA_SAK_CREATED");
  EXPECT_EQ(names.back(), "MKA_SESSION_ESTABLISHED");
}

}  // namespace
}  // namespace Macsec
