#include "tests/controlled_port/CpFixture.h"

namespace Macsec {
namespace {

using Support::Peer;
using Support::sak;
using ::testing::ElementsAre;

SakContext context(Sak const& key, bool txEnabled, bool rxEnabled, bool txInstalled,
                   bool rxInstalled) {
  return SakContext(key, 0, txEnabled, rxEnabled, txInstalled, rxInstalled);
}

// What the actor says.

TEST_F(ControlledPort, AsksForReceptionOfANewKey) {
  begin();
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  distSakIs(sak(1, 7));
  EXPECT_THAT(writes->order, ElementsAre("latest", "rxSak"));
  EXPECT_EQ(latest(), context(sak(1, 7), false, true, false, false));
  EXPECT_EQ(*cp().rxSak(AssociationNumber(1)), salted(sak(1, 7)));
  EXPECT_EQ(cp().rxSak(AssociationNumber(1))->salt().size(), 24u);
  EXPECT_EQ(latest().sak().salt(), "");
  EXPECT_EQ(cp().txSak(), Sak());
  EXPECT_EQ(traced(": Enabling receive on key: b1b2b3b4b5b6b7b8b9babbbc:7 for actor "), 1u);
  Vesk::retire(writes);
}

TEST_F(ControlledPort, TellsWhatItIsMadeOf) {
  begin();
  EXPECT_TRUE(sm().initialized());
  EXPECT_EQ(sm().ckn(), "6162");
  EXPECT_EQ(sm().intfId(), port.intfId);
  EXPECT_EQ(sm().status(), port.Switch::status);
  EXPECT_EQ(sm().cpStatus(), port.cpStatus());
  EXPECT_EQ(sm().portStatus(), port.portStatus());
  EXPECT_EQ(sm().hwStatus(), port.hwStatus);
  EXPECT_EQ(sm().timerWheel(), port.wheel);
}

TEST_F(ControlledPort, IgnoresAnEmptyKey) {
  begin();
  distSakIs(sak(1, 7));
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  distSakIs(Sak());
  EXPECT_TRUE(writes->order.empty());
  EXPECT_EQ(traced(": Ignoring empty distSak for actor "), 2u);
  Vesk::retire(writes);
}

TEST_F(ControlledPort, IgnoresAKeyThatItHasWhateverItsMaterial) {
  begin();
  distSakIs(sak(1, 7));
  Sak reencoded = sak(1, 7);
  reencoded.keyIs("another encoding");
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  distSakIs(reencoded);
  EXPECT_EQ(traced(": Ignoring duplicate latest SAK for actor "), 1u);
  port.in([&] {
    port.cpStatus()->oldSakContextIs(latest());
    port.cpStatus()->latestSakContextIs(SakContext());
    writes->order.clear();
  });
  distSakIs(sak(1, 7));
  EXPECT_EQ(traced(": Ignoring duplicate old SAK for actor "), 1u);
  EXPECT_TRUE(writes->order.empty());
  Vesk::retire(writes);
}

TEST_F(ControlledPort, AKeyThatWasNeverUsedMakesRoom) {
  begin();
  distSakIs(sak(1, 7));
  port.in([&] { port.actor("6162")->sakTransmitIs(true); });
  Sak const transmitted = cp().txSak();
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  distSakIs(sak(2, 8));
  EXPECT_THAT(writes->order, ElementsAre("rxSak", "latest", "latest", "rxSak"));
  EXPECT_EQ(cp().rxSak(AssociationNumber(1)), nullptr);
  EXPECT_EQ(cp().txSak(), transmitted);
  EXPECT_EQ(old(), SakContext());
  EXPECT_EQ(latest().sak(), sak(2, 8));
  Vesk::retire(writes);
}

TEST_F(ControlledPort, AKeyThatIsLiveOnTransmitMovesToOldAtOnce) {
  begin();
  port.in([&] {
    port.cpStatus()->oldSakContextIs(context(sak(3, 6), false, true, false, true));
    port.cpStatus()->rxSakIs(salted(sak(3, 6)));
  });
  distSakIs(sak(0, 7));
  receiveUp(sak(0, 7));
  port.in([&] { port.actor("6162")->sakTransmitIs(true); });
  transmitUp(sak(0, 7));
  EXPECT_EQ(sm().oldKeyRetirementTimer().time(), 3);
  distSakIs(sak(1, 8));
  EXPECT_EQ(sm().oldKeyRetirementTimer().time(), Zorn::never);
  EXPECT_EQ(old(), context(sak(0, 7), true, true, true, true));
  EXPECT_EQ(latest().sak(), sak(1, 8));
  EXPECT_EQ(cp().rxSak(AssociationNumber(3)), nullptr);
  EXPECT_EQ(cp().rxSak().members(), 2u);
}

TEST_F(ControlledPort, AKeyUnderTheNumberOfTheOldOneRetiresThatFirst) {
  begin();
  port.in([&] {
    port.cpStatus()->oldSakContextIs(context(sak(1, 7), true, true, true, true));
    port.cpStatus()->rxSakIs(salted(sak(1, 7)));
  });
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  distSakIs(sak(1, 8));
  EXPECT_THAT(writes->order, ElementsAre("rxSak", "old", "latest", "rxSak"));
  EXPECT_EQ(cp().rxSak().members(), 1u);
  EXPECT_EQ(*cp().rxSak(AssociationNumber(1)), salted(sak(1, 8)));
  EXPECT_EQ(old(), SakContext());
  Vesk::retire(writes);
}

TEST_F(ControlledPort, APeerTransmitsWhenToldToBeforeItsOwnReceptionIsUp) {
  begin();
  distSakIs(sak(1, 7));
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  port.in([&] { port.actor("6162")->sakTransmitIs(true); });
  EXPECT_THAT(writes->order, ElementsAre("latest", "tx"));
  EXPECT_EQ(latest(), context(sak(1, 7), true, true, false, false));
  EXPECT_EQ(cp().txSak(), salted(sak(1, 7)));
  EXPECT_EQ(traced(": Enabling transmit on key: b1b2b3b4b5b6b7b8b9babbbc:7 for actor "), 1u);
  Vesk::retire(writes);
}

TEST_F(ControlledPort, AKeyServerDoesNot) {
  begin(true);
  distSakIs(sak(1, 7));
  port.in([&] { port.actor("6162")->sakTransmitIs(true); });
  EXPECT_FALSE(latest().txEnabled());
  EXPECT_EQ(cp().txSak(), Sak());
  EXPECT_EQ(traced(": Ignoring latest key TX enable on key: b1b2b3b4b5b6b7b8b9babbbc:7 for actor "),
            1u);
}

TEST_F(ControlledPort, TransmitOfAnotherKeyThanTheLatestIsIgnored) {
  begin();
  port.in(
      [&] { port.cpStatus()->latestSakContextIs(context(sak(2, 9), false, true, false, true)); });
  port.in([&] { port.actor("6162")->sakTransmitIs(true); });
  EXPECT_FALSE(latest().txEnabled());
  EXPECT_EQ(traced(": Ignoring sakTransmit because distSak and latest key do not match for actor "),
            1u);
}

TEST_F(ControlledPort, TheEndOfTransmitChangesNothing) {
  begin();
  distSakIs(sak(1, 7));
  port.in([&] { port.actor("6162")->sakTransmitIs(true); });
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  port.in([&] { port.actor("6162")->sakTransmitIs(false); });
  EXPECT_TRUE(writes->order.empty());
  Vesk::retire(writes);
}

// The transmit step transmits `distSak`, also an empty one.
TEST_F(ControlledPort, AnExpiryOverAnEmptyContextStillTransmitsWhatIsDistributed) {
  begin(true);
  port.in([&] { sm().handleLatestKeyTxEnable(); });
  SakContext expected;
  expected.txEnabledIs(true);
  EXPECT_EQ(latest(), expected);
  EXPECT_EQ(cp().txSak(), salted(Sak()));
  EXPECT_EQ(sm().latestKeyTxEnableTimer().time(), Zorn::never);
}

TEST_F(ControlledPort, PacketNumbersGoToTheNumbersOfBothContexts) {
  begin();
  port.in([&] {
    port.cpStatus()->oldSakContextIs(context(sak(3, 6), true, true, true, true));
    port.cpStatus()->latestSakContextIs(context(sak(1, 7), true, true, true, true));
    port.actor("6162")->keysLPNIs(KeysLPN(40, 50));
  });
  EXPECT_EQ(*cp().rxLPN(AssociationNumber(3)), RxLPN(40, AssociationNumber(3)));
  EXPECT_EQ(*cp().rxLPN(AssociationNumber(1)), RxLPN(50, AssociationNumber(1)));
}

TEST_F(ControlledPort, WithEmptyContextsTheSecondPacketNumberOverwritesTheFirst) {
  begin();
  port.in([&] { port.actor("6162")->keysLPNIs(KeysLPN(40, 50)); });
  EXPECT_EQ(cp().rxLPN(AssociationNumber(0))->lpn(), 50u);
  EXPECT_EQ(cp().rxLPN().members(), 1u);
}

// Short channel identifiers.

TEST_F(ControlledPort, TheGreaterSciGetsTheLowerNumber) {
  Sci const mine(Lumo::EthAddr({2, 0, 0, 0, 0, 1}), 9);
  begin();
  port.in([&] { port.portStatus()->mySciIs(mine); });
  auto const mineBeside = [&](Sci const& peer) {
    Peer member(5);
    member.sci = peer;
    port.in([&] {
      BasicInfo basic;
      basic.sciIs(peer);
      port.actor("6162")->livePeerIs(member.id)->baseInfoIs(basic);
      sm().handleLivePeer(member.id);
    });
    EXPECT_EQ(cp().mySsci().sci(), mine);
    EXPECT_EQ(cp().peerSsci().sci(), peer);
    EXPECT_NE(cp().mySsci().ssci(), cp().peerSsci().ssci());
    return std::string(cp().mySsci().ssci().view());
  };
  EXPECT_EQ(mineBeside(Sci(Lumo::EthAddr({2, 0, 0, 0, 0, 2}), 1)), "00000002");
  EXPECT_EQ(mineBeside(Sci(mine.addr(), 10)), "00000002");
  EXPECT_EQ(mineBeside(Sci(mine.addr(), 8)), "00000001");
  EXPECT_EQ(mineBeside(Sci(Lumo::EthAddr({1, 0, 0, 0, 0, 2}), 99)), "00000001");
  EXPECT_EQ(mineBeside(mine), "00000001");
  EXPECT_EQ(cp().peerSsci().ssci(), "00000002");
}

TEST_F(ControlledPort, APeerThatJoinsLaterGetsNoNumberForItsRecordIsNotFilledYet) {
  begin();
  Peer member(5);
  port.live(member);
  EXPECT_EQ(cp().mySsci(), Ssci());
  EXPECT_EQ(cp().peerSsci(), Ssci());
  EXPECT_EQ(port.world.traced(": Peer Sci cannot be all zeros"), 1u);
}

TEST_F(ControlledPort, APeerThatGoesLeavesTheNumbers) {
  Peer member(5);
  port.live(member);
  begin();
  EXPECT_EQ(cp().peerSsci(), Ssci(member.sci, "00000001"));
  port.in([&] { port.actor("6162")->livePeerDel(member.id); });
  EXPECT_EQ(cp().peerSsci(), Ssci(member.sci, "00000001"));
}

TEST_F(ControlledPort, CatchesUpWithPeersKeyAndPacketNumbersWhenItStarts) {
  Peer member(5);
  port.live(member);
  port.in([&] {
    port.actor("6162")->electedSelfIs(false);
    port.actor("6162")->principalIs(false);
    port.cpStatus()->latestSakContextIs(SakContext());
    port.actor("6162")->distSakIs(sak(1, 7));
    port.actor("6162")->keysLPNIs(KeysLPN(40, 50));
  });
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  port.in([&] {
    port.cpStatus()->mySsciIs(Ssci());
    port.cpStatus()->latestSakContextIs(SakContext());
    port.cpStatus()->rxSakDelAll();
    port.cpStatus()->rxLPNDelAll();
    writes->order.clear();
    port.actor("6162")->principalIs(false);
    auto const direct = controlledPortSmFactory("6162", port.intfId, port.Switch::status,
                                                port.hwStatus, port.wheel);
    EXPECT_TRUE(direct->initialized());
    EXPECT_EQ(direct->latestKeyTxEnableTimer().time(), Zorn::never);
    EXPECT_EQ(direct->oldKeyRetirementTimer().time(), Zorn::never);
  });
  EXPECT_EQ(writes->order.front(), "mySsci");
  EXPECT_EQ(cp().rxLPN(AssociationNumber(1))->lpn(), 50u);
  Vesk::retire(writes);
}

}  // namespace
}  // namespace Macsec
