#include "tests/controlled_port/CpFixture.h"

// What the hardware says.

namespace Macsec {
namespace {

using Support::sak;
using ::testing::ElementsAre;

TEST_F(ControlledPort, AReportOfReceptionMarksTheLatestKeyAndAPeerWaits) {
  begin();
  distSakIs(sak(1, 7));
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  receiveUp(sak(1, 7));
  EXPECT_THAT(writes->order, ElementsAre("latest"));
  EXPECT_EQ(latest(), SakContext(sak(1, 7), 0, false, true, false, true));
  EXPECT_EQ(traced(": Starting receive on key: b1b2b3b4b5b6b7b8b9babbbc:7 for actor "), 1u);
  EXPECT_EQ(sm().latestKeyTxEnableTimer().time(), Zorn::never);
  Vesk::retire(writes);
}

TEST_F(ControlledPort, AKeyServerWithAClosedPortTransmitsAtOnce) {
  begin(true);
  distSakIs(sak(1, 7));
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  receiveUp(sak(1, 7));
  EXPECT_THAT(writes->order, ElementsAre("latest", "latest", "tx"));
  EXPECT_TRUE(latest().txEnabled());
  EXPECT_EQ(sm().latestKeyTxEnableTimer().time(), Zorn::never);
  Vesk::retire(writes);
}

TEST_F(ControlledPort, AKeyServerWithAnOpenPortWaitsForItsPeers) {
  begin(true);
  port.in([&] { port.cpStatus()->controlledPortEnabledIs(true); });
  distSakIs(sak(1, 7));
  port.world.time = 10;
  receiveUp(sak(1, 7));
  EXPECT_FALSE(latest().txEnabled());
  EXPECT_EQ(sm().latestKeyTxEnableTimer().time(), 190);
  EXPECT_EQ(
      traced(": Starting transmit-enable timer for key:b1b2b3b4b5b6b7b8b9babbbc:7 for actor "), 1u);
  port.world.time = 190;
  port.in([&] {
    while (port.wheel->runOne() && !latest().txEnabled()) continue;
  });
  EXPECT_TRUE(latest().txEnabled());
  EXPECT_EQ(sm().latestKeyTxEnableTimer().time(), Zorn::never);
}

TEST_F(ControlledPort, APeersUseOfTheKeyComesBeforeTheTimer) {
  begin(true);
  port.in([&] { port.cpStatus()->controlledPortEnabledIs(true); });
  distSakIs(sak(1, 7));
  receiveUp(sak(1, 7));
  port.in([&] { port.actor("6162")->sakTransmitIs(true); });
  EXPECT_TRUE(latest().txEnabled());
  EXPECT_EQ(sm().latestKeyTxEnableTimer().time(), Zorn::never);
}

TEST_F(ControlledPort, AReportOfReceptionOfAnotherKeyIsIgnored) {
  begin();
  distSakIs(sak(1, 7));
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  for (Sak const& other : {sak(2, 7), sak(1, 8), sak(1, 7, "c1c2c3c4c5c6c7c8c9cacbcc")}) {
    receiveUp(other);
  }
  EXPECT_TRUE(writes->order.empty());
  for (char const* an : {"1", "2"}) {
    EXPECT_GE(traced(": Ignoring receive SA for AN: " + std::string(an) +
                     " because it doesn't match with the latestSak for "),
              1u);
  }
  Vesk::retire(writes);
}

TEST_F(ControlledPort, ASecondReportOfReceptionAndADeletionChangeNothing) {
  begin();
  distSakIs(sak(1, 7));
  receiveUp(sak(1, 7));
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  receiveUp(sak(1, 7));
  EXPECT_TRUE(writes->order.empty());
  EXPECT_EQ(traced(": Ignoring receive SA for AN: 1 because the SAK is already installed for RX "
                   "for "),
            1u);
  EXPECT_EQ(traced(": Ignoring receive SA being deleted for AN: 1 for actor "), 1u);
  Vesk::retire(writes);
}

TEST_F(ControlledPort, TheFirstReportOfTransmitMovesTheKeyToOldAndOpensThePort) {
  begin();
  distSakIs(sak(1, 7));
  receiveUp(sak(1, 7));
  port.in([&] { port.actor("6162")->sakTransmitIs(true); });
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  transmitUp(sak(1, 7));
  EXPECT_THAT(writes->order, ElementsAre("latest", "old", "latest", "enabled"));
  EXPECT_EQ(latest(), SakContext());
  EXPECT_EQ(old(), SakContext(sak(1, 7), 0, true, true, true, true));
  EXPECT_TRUE(cp().controlledPortEnabled());
  EXPECT_EQ(sm().oldKeyRetirementTimer().time(), Zorn::never);
  EXPECT_EQ(traced(": Starting transmit on key: b1b2b3b4b5b6b7b8b9babbbc:7 for actor "), 1u);
  EXPECT_EQ(traced(": Moving latest key to old key for actor "), 1u);
  ASSERT_EQ(port.world.logs.back().name, "MKA_SAK_ACTIVATED");
  EXPECT_EQ(port.world.logs.back().arguments,
            (std::vector<std::string>{"b9babbbc", "7", "Ethernet1"}));
  Support::expectHandle(*port.world.handles.back(), "MKA_SAK_ACTIVATED", 6,
                        "Activated SAK with key id ending in %s:%s on interface %s",
                        "SAK activated, all data packets henceforth will be encrypted with this "
                        "SAK",
                        120.0);
  Vesk::retire(writes);
}

class Rotation : public ControlledPort {
 protected:
  Rotation() {
    begin();
    takeKey(sak(0, 1));
  }
  void takeKey(Sak const& key) {
    port.in([&] { port.actor("6162")->sakTransmitIs(false); });
    distSakIs(key);
    receiveUp(key);
    port.in([&] { port.actor("6162")->sakTransmitIs(true); });
    transmitUp(key);
  }
};

TEST_F(Rotation, KeepsTheFormerKeyForTheRetirementPeriod) {
  port.world.time = 100;
  takeKey(sak(1, 2));
  EXPECT_EQ(sm().oldKeyRetirementTimer().time(), 103);
  EXPECT_EQ(old(), SakContext(sak(0, 1), 0, false, true, false, true));
  EXPECT_EQ(latest(), SakContext(sak(1, 2), 0, true, true, true, true));
  EXPECT_EQ(cp().rxSak().members(), 2u);
  port.in([&] { sm().handleOldKeyRetirement(); });
  EXPECT_EQ(old(), SakContext(sak(1, 2), 0, true, true, true, true));
  EXPECT_EQ(latest(), SakContext());
  EXPECT_EQ(cp().rxSak(AssociationNumber(0)), nullptr);
  EXPECT_EQ(sm().oldKeyRetirementTimer().time(), Zorn::never);
}

TEST_F(Rotation, KeepsAKeyInSteadyUseWhenItIsDistributedAgain) {
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  distSakIs(Sak());
  distSakIs(sak(0, 1));
  EXPECT_TRUE(writes->order.empty());
  Vesk::retire(writes);
}

TEST_F(Rotation, TheLossOfAllPeersDoesNotCloseThePort) {
  Support::Peer peer(2);
  port.live(peer);
  port.runUntil(30);
  EXPECT_TRUE(port.actor("6162")->livePeer().empty());
  EXPECT_FALSE(port.actor("6162")->success());
  EXPECT_TRUE(cp().controlledPortEnabled());
}

TEST_F(ControlledPort, AReportOfTransmitOfAnotherKeyIsIgnored) {
  begin();
  distSakIs(sak(1, 7));
  auto writes = Vesk::make<CpWrites>(port, port.cpStatus());
  for (Sak const& other : {sak(2, 7), sak(1, 8), sak(1, 7, "c1c2c3c4c5c6c7c8c9cacbcc")}) {
    transmitUp(other);
  }
  EXPECT_TRUE(writes->order.empty());
  EXPECT_EQ(traced(": Ignoring transmit SA for AN: 1 because it doesn't match with the latestSak "
                   "for "),
            2u);
  port.in([&] { port.slice->status(port.intfId)->txSaStatusDel(); });
  EXPECT_TRUE(writes->order.empty());
  EXPECT_EQ(traced(": Ignoring empty txSaStatus for actor "), 1u);
  Vesk::retire(writes);
}

TEST_F(ControlledPort, ThePacketNumberIsThatOfTheReportWhichInstalledTheKey) {
  begin();
  port.in(
      [&] { port.cpStatus()->oldSakContextIs(SakContext(sak(3, 3), 0, true, true, true, true)); });
  distSakIs(sak(1, 7));
  auto hw = port.slice->status(port.intfId);
  port.in([&] { hw->txSaStatusIs(AssociationNumber(1), sak().keyMsgId(), 7); });
  EXPECT_EQ(latest().lpn(), 0u);
  EXPECT_TRUE(latest().txInstalled());
  port.in([&] { hw->txSaStatus()->lpnIs(55); });
  EXPECT_EQ(latest().lpn(), 0u);
  port.in([&] {
    hw->txSaStatusDel();
    hw->txSaStatusIs(AssociationNumber(1), sak().keyMsgId(), 7);
  });
  EXPECT_EQ(traced(": Ignoring transmit SA for AN: 1 because the SAK is already installed for TX "
                   "for "),
            1u);
}

TEST_F(ControlledPort, ReportsThatCameBeforeItAreNotReplayed) {
  receiveUp(sak(1, 7));
  transmitUp(sak(1, 7));
  begin();
  distSakIs(sak(1, 7));
  EXPECT_FALSE(latest().rxInstalled());
  EXPECT_FALSE(latest().txInstalled());
}

TEST_F(ControlledPort, AnotherEntityForTheInterfaceIsAskedForTransmitAndNotForReception) {
  begin();
  distSakIs(sak(1, 7));
  port.in([&] {
    auto another = MacSecIntfStatus::MacSecIntfStatusIs(port.intfId);
    another->rxSaStatusIs(AssociationNumber(1), sak().keyMsgId(), 7);
    another->txSaStatusIs(AssociationNumber(1), sak().keyMsgId(), 7)->lpnIs(55);
    port.hwStatus->statusIs(another);
  });
  EXPECT_FALSE(old().rxInstalled());
  EXPECT_TRUE(old().txInstalled());
  EXPECT_EQ(old().lpn(), 55u);
}

// The filter of visits by interface.

class Following : public ControlledPort, public ::testing::WithParamInterface<bool> {
 protected:
  Following() { port.world.visitsAreFilteredIs(GetParam()); }
};

TEST_P(Following, FollowsItsOwnInterfaceAndOthersOnlyWithoutTheFilter) {
  Lumo::IntfId const other("Ethernet2"), third("Ethernet3");
  port.in([&] { port.slice->statusIs(other); });
  begin();
  EXPECT_EQ(sm().followedInterfaces(), GetParam() ? 1u : 2u);
  port.in([&] { port.slice->statusIs(third); });
  EXPECT_EQ(sm().followedInterfaces(), GetParam() ? 1u : 3u);
  distSakIs(sak(1, 7));
  port.world.traces.clear();
  port.in([&] {
    for (Lumo::IntfId const& intfId : {other, third}) {
      auto hw = port.slice->status(intfId);
      hw->rxSaStatusIs(AssociationNumber(1), sak().keyMsgId(), 7);
      hw->txSaStatusIs(AssociationNumber(1), sak().keyMsgId(), 7);
    }
  });
  EXPECT_EQ(port.world.traced("ControlledPortSm"), 0u);
  EXPECT_FALSE(latest().rxInstalled());
  port.in([&] { port.slice->statusDel(other); });
  EXPECT_EQ(sm().followedInterfaces(), GetParam() ? 1u : 2u);
  receiveUp(sak(1, 7));
  EXPECT_TRUE(latest().rxInstalled());
}

TEST_P(Following, LetsGoOfItsInterfaceAndTakesItUpAgain) {
  begin();
  distSakIs(sak(1, 7));
  auto hw = port.slice->status(port.intfId);
  port.in([&] { port.hwStatus->statusDel(port.intfId); });
  EXPECT_FALSE(port.portSm());
  port.in([&] { port.hwStatus->statusIs(hw); });
  EXPECT_TRUE(port.portSm());
}

INSTANTIATE_TEST_SUITE_P(FilterOnAndOff, Following, ::testing::Bool());

}  // namespace
}  // namespace Macsec
