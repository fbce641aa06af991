#include "linux/kernel/KernelDriver.h"

#include "tests/linux/kernel/KernelBench.h"

namespace Linux::Test {
namespace {

using Macsec::AssociationNumber;
using Macsec::CipherSuite;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TheKernelDriver : public KernelBench {};

TEST_F(TheKernelDriver, HasAnEntryBeforeThereIsAPortAndMakesTheDeviceWithIt) {
  start();
  ASSERT_TRUE(report());
  EXPECT_FALSE(report()->configured());
  EXPECT_THAT(kernel.asked, IsEmpty());
  portIs(CipherSuite::gcmAesXpn256);
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("make eth0-sec", "up"));
  EXPECT_TRUE(report()->configured());
  EXPECT_EQ(report()->secHdrSize(), 32u);
  EXPECT_EQ(device().secY.cipher, kGcmAesXpn256);
  EXPECT_EQ(device().secY.sci, 0x02000000000a0001u);
  EXPECT_EQ(device().secY.settings, SecYSettings());
  EXPECT_EQ(device().link.parent, 3);
}

TEST_F(TheKernelDriver, InstallsTheTransmitKeyAndSwitchesToItBeforeTheOldOneGoes) {
  secured();
  cp->rxSakIs(sak(1, 2));
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("add rx 1"));
  cp->txSakIs(sak(1, 2));
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("add tx 1", "encode 1", "off tx 0", "remove tx 0"));
  EXPECT_EQ(report()->txSaStatus()->keyNum(), 2u);
  cp->rxSakDel(AssociationNumber(0));
  EXPECT_FALSE(rx(0));
  EXPECT_TRUE(rx(1));
}

TEST_F(TheKernelDriver, GivesEachChannelItsShortIdentifierAndEachKeyItsLabel) {
  secured();
  ASSERT_EQ(rxSas().size(), 1u);
  EXPECT_EQ(rxSas()[0].ssci, 1u);
  EXPECT_EQ(device().secY.txSas.at(0).ssci, 2u);
  KeyId const id = {0xa1, 0xa2, 0xa3, 0xa4, 0xa5, 0xa6, 0xa7, 0xa8,
                    0xa9, 0xaa, 0xab, 0xac, 0,    0,    0,    1};
  EXPECT_EQ(rxSas()[0].keyId, id);
  EXPECT_EQ(kernel.keys[id], std::vector<uint8_t>(16, 0x55));
}

TEST_F(TheKernelDriver, RemovesTheAssociationWhoseNumberAnotherKeyTakes) {
  secured();
  cp->rxSakIs(sak(0, 2));
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("off rx 0", "remove rx 0", "add rx 0"));
  EXPECT_EQ(rx(0)->keyNum(), 2u);
  cp->txSakIs(sak(0, 2));
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("off tx 0", "remove tx 0", "add tx 0"));
  EXPECT_EQ(report()->txSaStatus()->keyNum(), 2u);
}

TEST_F(TheKernelDriver, DoesWhatItsOwnReportMakesTheEngineAskFor) {
  struct Engine final : Vesk::Reactor<Macsec::MacSecIntfStatus const, TheKernelDriver, Engine> {
    using Reactor::Reactor;
    std::function<void()> then;
    void onRxSaStatus(AssociationNumber const&) override { then(); }
  };
  portIs();
  start();
  auto engine = Vesk::make<Engine>(*this, report());
  engine->hasNotificationActiveIs(true);
  engine->then = [&] { cp->txSakIs(sak(0, 1)); };
  cp->rxSakIs(sak(0, 1));
  EXPECT_TRUE(report()->txSaStatus());
  EXPECT_EQ(device().secY.txSas.size(), 1u);
  Vesk::retire(engine);
}

TEST_F(TheKernelDriver, WaitsForThePeersChannelBeforeItInstallsAReceiveKey) {
  portIs();
  cp->peerSsciIs(Macsec::Ssci());
  start();
  kernel.asked.clear();
  cp->rxSakIs(sak(0, 1));
  EXPECT_THAT(kernel.asked, IsEmpty());
  EXPECT_FALSE(rx(0));
  cp->peerSsciIs({sci(11), "00000001"});
  EXPECT_THAT(kernel.asked, ElementsAre("add channel", "add rx 0"));
  EXPECT_TRUE(rx(0));
}

TEST_F(TheKernelDriver, MovesTheReceiveKeysToAnotherPeersChannel) {
  secured();
  cp->peerSsciIs({sci(12), "00000001"});
  EXPECT_THAT(kernel.asked, ElementsAre("remove channel", "add channel", "add rx 0"));
  EXPECT_TRUE(rx(0));
}

TEST_F(TheKernelDriver, AnotherOneTakesUpWhatTheKernelHolds) {
  secured();
  device().secY.txSas[0].packetNumber = 5000;
  restart();
  EXPECT_THAT(kernel.asked, IsEmpty());
  EXPECT_EQ(driver->counts(), (KernelCounts{.devicesAdopted = 1}));
  EXPECT_EQ(report()->txSaStatus()->keyNum(), 1u);
  EXPECT_TRUE(rx(0));
  EXPECT_TRUE(report()->configured());
  EXPECT_EQ(driver->packetNumber(kIntf), 5000u);
}

TEST_F(TheKernelDriver, AnotherOneRemovesWhatNobodyAsksFor) {
  secured();
  ASSERT_TRUE(kernel.secYAdd({.name = "other", .parent = 3, .sci = 9}));
  ASSERT_TRUE(kernel.rxScAdd(device().link.index, 77));
  cp->rxSakDelAll();
  rxSas().push_back({2, true, 1, 1, {}});
  restart();
  EXPECT_THAT(kernel.asked, ElementsAre("remove channel", "off rx 2", "remove rx 2"));
  EXPECT_TRUE(kernel.device("other"));
  status->cpStatusDel(kIntf);
  runAt(driver->nextTime());
  EXPECT_FALSE(kernel.device("eth0-sec"));
  EXPECT_TRUE(kernel.device("other"));
  EXPECT_FALSE(report()->configured());
}

TEST_F(TheKernelDriver, ALeftoverDeviceWithoutPortGoesWhenAllIsQuiet) {
  secured();
  status->cpStatusDel(kIntf);
  driver.reset();
  kernel.asked.clear();
  start();
  EXPECT_TRUE(kernel.device("eth0-sec"));
  EXPECT_EQ(driver->nextTime(), 0);
  runAt(0);
  EXPECT_THAT(kernel.asked, ElementsAre("remove"));
}

TEST_F(TheKernelDriver, MakesTheDeviceAnewForAnotherSuite) {
  secured();
  status->cpStatusDel(kIntf);
  portIs(CipherSuite::gcmAesXpn256);
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("remove", "make eth0-sec", "up"));
  EXPECT_FALSE(report()->txSaStatus());
  EXPECT_FALSE(rx(0));
  EXPECT_TRUE(report()->configured());
}

TEST_F(TheKernelDriver, KeepsTheDeviceOfAPortThatComesBackAsItWas) {
  secured();
  status->cpStatusDel(kIntf);
  portIs();
  runAt(0);
  EXPECT_THAT(kernel.asked, ElementsAre("remove channel", "off tx 0", "remove tx 0"));
}

TEST_F(TheKernelDriver, ReadsThePacketNumbersOfAllOncePerMkpduPeriod) {
  secured();
  runAt(0);
  int const dumps = kernel.dumps;
  device().secY.txSas[0].packetNumber = 0x100000007;
  rxSas()[0].packetNumber = 9;
  EXPECT_EQ(driver->nextTime(), 2);
  runAt(1.9);
  EXPECT_EQ(kernel.dumps, dumps);
  runAt(2);
  EXPECT_EQ(kernel.dumps, dumps + 1);
  EXPECT_EQ(driver->packetNumber(kIntf), 0x100000007u);
  EXPECT_EQ(report()->txSaStatus()->lpn(), 7u);
  EXPECT_EQ(rx(0)->lpn(), 9u);
  EXPECT_THAT(kernel.asked, IsEmpty());
  status->mkpduPeriodIs(0.5);
  EXPECT_EQ(driver->nextTime(), 2.5);
}

TEST_F(TheKernelDriver, RaisesTheLowestAcceptablePacketNumberAndNeverLowersIt) {
  secured();
  rxSas()[0].packetNumber = 100;
  cp->rxLPNIs({99, AssociationNumber(0)});
  EXPECT_EQ(rxSas()[0].packetNumber, 100u);
  EXPECT_THAT(kernel.asked, IsEmpty());
  world.time = 1;
  cp->rxLPNIs({150, AssociationNumber(0)});
  EXPECT_EQ(rxSas()[0].packetNumber, 150u);
  rxSas()[0].packetNumber = 0xfffffff0;
  runAt(2);
  cp->rxLPNIs({5, AssociationNumber(0)});
  EXPECT_EQ(rxSas()[0].packetNumber, 0x100000005u);
}

TEST_F(TheKernelDriver, TheLowestPacketNumberOfAFormerKeyConcernsNoOtherKey) {
  secured();
  cp->rxLPNIs({150, AssociationNumber(0)});
  cp->rxSakIs(sak(0, 2));
  EXPECT_EQ(rxSas()[0].packetNumber, 1u);
}

TEST_F(TheKernelDriver, ALowestPacketNumberThatThePeerToldOfAnotherKeyIsntThisKeys) {
  secured();
  auto const actor = status->portStatus(kIntf)->actorStatusIs("6162");
  actor->principalIs(true);
  Macsec::KeyInfo info;
  info.keyServerMsgIdIs(sak(0, 1).keyMsgId());
  info.keyNumIs(1);
  info.keyLLPNIs(20);
  Macsec::SakUseInfo use;
  use.latestKeyInfoIs(info);
  actor->livePeerIs("b1b2b3b4b5b6b7b8b9babbbc")->sakUseInfoIs(use);
  cp->rxLPNIs({1000000, AssociationNumber(0)});
  EXPECT_EQ(rxSas()[0].packetNumber, 1u);
  cp->rxLPNIs({20, AssociationNumber(0)});
  EXPECT_EQ(rxSas()[0].packetNumber, 20u);
}

TEST_F(TheKernelDriver, MakesAgainWhatSomebodyElseTookAway) {
  secured();
  kernel.devices.clear();
  runAt(2);
  EXPECT_TRUE(kernel.device("eth0-sec"));
  EXPECT_TRUE(rx(0));
  EXPECT_EQ(driver->counts().devicesMade, 2u);
}

TEST_F(TheKernelDriver, BringsTheDeviceUpWhenItsParentIs) {
  kernel.isParentUp = false;
  secured();
  EXPECT_TRUE(report()->configured());
  EXPECT_FALSE(device().up);
  kernel.isParentUp = true;
  runAt(2);
  EXPECT_TRUE(device().up);
  EXPECT_THAT(world.logs, IsEmpty());
}

TEST_F(TheKernelDriver, AnInterfaceThatGoesTakesItsEntryAlong) {
  secured();
  driver->interfaceDel(kIntf);
  EXPECT_FALSE(slice->status(kIntf));
  EXPECT_FALSE(driver->held(kIntf));
  EXPECT_EQ(driver->nextTime(), std::numeric_limits<double>::infinity());
}

TEST_F(TheKernelDriver, AnInterfaceMadeAnewIsAnotherOne) {
  secured();
  driver->interfaceIs(kIntf, 4);
  ASSERT_TRUE(kernel.device("eth0-sec"));
  EXPECT_EQ(device().link.parent, 4);
  EXPECT_EQ(device().secY.txSas.size(), 1u);
}

TEST_F(TheKernelDriver, GivesADeviceTheNameThatIsChosenForIt) {
  portIs();
  start({}, {.name = "uplink"});
  EXPECT_TRUE(kernel.device("uplink"));
  EXPECT_FALSE(kernel.device("eth0-sec"));
}

TEST_F(TheKernelDriver, MakesTheDeviceAnewUnderAnotherName) {
  secured();
  driver->deviceIs(kIntf, {.name = "uplink"});
  EXPECT_FALSE(kernel.device("eth0-sec"));
  ASSERT_TRUE(kernel.device("uplink"));
  EXPECT_TRUE(rx(0));
}

TEST_F(TheKernelDriver, GivesADeviceOfALongInterfaceANameThatTheKernelTakes) {
  Lumo::IntfId const longest{"enx001122334455"};
  status->portStatusIs(longest)->mySciIs(sci(10));
  status->cpStatusIs(longest, Macsec::MacsecParams(CipherSuite::gcmAesXpn128, true));
  start();
  driver->interfaceIs(longest, 4);
  EXPECT_TRUE(kernel.device("enx0-bq1ofe-sec"));
}

TEST_F(TheKernelDriver, GoesOnWithADeviceThatHasTheDefaultNameOfFormerVersions) {
  secured();
  device().link.name = "eth0.sec";
  restart();
  EXPECT_THAT(kernel.asked, IsEmpty());
  EXPECT_TRUE(report()->txSaStatus());
  EXPECT_EQ(driver->port(kIntf)->deviceName(), "eth0.sec");
  EXPECT_EQ(world.logged("MACSEC_DEVICE_OF_FORMER_NAME"), 1u);
  driver->deviceIs(kIntf, {.name = "eth0.sec"});
  EXPECT_THAT(kernel.asked, IsEmpty());
}

TEST_F(TheKernelDriver, GivesADeviceOfFormerNameTheNewOneWhenItIsMadeAnew) {
  secured();
  device().link.name = "eth0.sec";
  restart();
  kernel.devices.clear();
  runAt(2);
  EXPECT_TRUE(kernel.device("eth0-sec"));
  EXPECT_EQ(driver->port(kIntf)->deviceName(), "eth0-sec");
}

TEST_F(TheKernelDriver, TakesAwayTheDeviceThatHadAnotherNameBeforeARestart) {
  Macsecd::KeyHistory history;
  secured({.history = &history});
  driver.reset();
  slice = Macsec::macSecStatusFactory("kernel");
  start({.history = &history}, {.name = "uplink"});
  EXPECT_FALSE(kernel.device("eth0-sec"));
  EXPECT_TRUE(kernel.device("uplink"));
  EXPECT_TRUE(report()->txSaStatus());
}

TEST_F(TheKernelDriver, TakesAwayTheDeviceOfAnInterfaceThatIsNamedNoMoreAfterARestart) {
  secured();
  ASSERT_TRUE(kernel.secYAdd({.name = "other", .parent = 4, .sci = 9}));
  driver.reset();
  slice = Macsec::macSecStatusFactory("kernel");
  driver.emplace(status, slice, kernel, KernelDriverOptions());
  driver->removeOthers();
  EXPECT_FALSE(kernel.device("eth0-sec"));
  EXPECT_TRUE(kernel.device("other")) << "nobody knows whose it is";
}

TEST_F(TheKernelDriver, LeavesADeviceOfFormerNameThatHasAnotherChannelToWhoeverMadeIt) {
  ASSERT_TRUE(kernel.secYAdd({.name = "eth0.sec", .parent = 3, .sci = 9}));
  secured();
  EXPECT_TRUE(kernel.device("eth0.sec"));
  EXPECT_TRUE(kernel.device("eth0-sec"));
}

TEST_F(TheKernelDriver, ChangesTheReplayWindowOfALivingDeviceAndNothingElse) {
  secured();
  driver->deviceIs(kIntf, {.replayWindow = 64});
  EXPECT_EQ(device().secY.settings.window, 64u);
  EXPECT_EQ(device().secY.txSas.size(), 1u);
  EXPECT_EQ(kernel.asked.size(), 1u);
}

TEST_F(TheKernelDriver, FollowsAnotherTreeWithoutTouchingWhatBothAskFor) {
  secured();
  auto const former = status;
  status = Macsec::statusFactory("status");
  portIs();
  Macsec::Sak const key = sak(0, 1);
  cp->rxSakIs(key);
  cp->txSakIs(key);
  driver->follow(status);
  EXPECT_THAT(kernel.asked, IsEmpty());
  former->cpStatus(kIntf)->txSakIs(sak(1, 9));
  EXPECT_THAT(kernel.asked, IsEmpty());
  cp->txSakIs(sak(1, 2));
  EXPECT_EQ(report()->txSaStatus()->keyNum(), 2u);
}

TEST_F(TheKernelDriver, RemovesAllOfItsOwnAtTheEnd) {
  secured();
  ASSERT_TRUE(kernel.secYAdd({.name = "other", .parent = 3, .sci = 9}));
  driver->removeAll();
  ASSERT_EQ(kernel.devices.size(), 1u);
  EXPECT_EQ(kernel.devices[0].link.name, "other");
  EXPECT_FALSE(report()->configured());
}

}  // namespace
}  // namespace Linux::Test
