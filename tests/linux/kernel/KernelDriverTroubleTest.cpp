#include "linux/kernel/KernelDriver.h"

#include "tests/linux/kernel/KernelBench.h"

namespace Linux::Test {
namespace {

using Macsec::AssociationNumber;
using Macsec::CipherSuite;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ADriverInTrouble : public KernelBench {};

TEST_F(ADriverInTrouble, RefusesATransmitKeyThatIsNone) {
  secured();
  Macsec::Sak empty = sak(1, 2);
  empty.keyIs("");
  cp->txSakIs(empty);
  EXPECT_THAT(kernel.asked, IsEmpty());
  ASSERT_EQ(world.logged("MACSEC_KEY_REFUSED"), 1u);
  EXPECT_EQ(world.logs[0].text,
            "Interface eth0 (eth0-sec) can't install the transmit key: it is empty; wait for the "
            "next key; if none comes within a minute, run 'macsecctl explain' at both ends");
  EXPECT_EQ(report()->txSaStatus()->keyNum(), 1u);
}

TEST_F(ADriverInTrouble, RefusesKeysThatDontDecodeOrAreOfAnotherLength) {
  portIs();
  start();
  kernel.asked.clear();
  Macsec::Sak broken = sak(1, 2);
  broken.keyIs("w1:00");
  cp->txSakIs(broken);
  cp->txSakIs(sak(1, 3, 64));
  EXPECT_THAT(kernel.asked, IsEmpty());
  EXPECT_EQ(driver->counts().keysRefused, 2u);
  EXPECT_FALSE(report()->txSaStatus());
  EXPECT_EQ(world.logged("MACSEC_KEY_REFUSED"), 2u);
  cp->txSakIs(sak(1, 4));
  EXPECT_TRUE(report()->txSaStatus());
}

TEST_F(ADriverInTrouble, ReportsNothingThatTheKernelRefusedAndTriesAgainLaterAndLater) {
  portIs();
  start();
  kernel.refused["add rx 0"] = ENOSPC;
  cp->rxSakIs(sak(0, 1));
  EXPECT_FALSE(rx(0));
  std::vector<double> times;
  for (int i = 0; i < 9; ++i) {
    kernel.asked.clear();
    while (kernel.asked.empty()) runAt(driver->nextTime());
    times.push_back(world.time);
  }
  EXPECT_THAT(times, ElementsAre(1, 3, 7, 15, 31, 63, 123, 183, 243));
  EXPECT_EQ(driver->counts().refusals, 10u);
  EXPECT_EQ(world.logged("MACSEC_KERNEL_REFUSED"), 1u);
  EXPECT_EQ(world.logs[0].text,
            "The kernel refuses to install the receive key on interface eth0 (eth0-sec): No space "
            "left on device; it is tried again by itself; if it stays so, see what the kernel logs "
            "('dmesg')");
  kernel.refused.clear();
  runAt(303);
  EXPECT_TRUE(rx(0));
}

TEST_F(ADriverInTrouble, AReceiveKeyThatIsRefusedKeepsNoTransmitKeyFromTheKernel) {
  portIs();
  start();
  kernel.refused["add rx 0"] = ENOSPC;
  cp->rxSakIs(sak(0, 1));
  cp->txSakIs(sak(0, 1));
  EXPECT_FALSE(rx(0));
  EXPECT_EQ(device().secY.txSas.size(), 1u);
}

TEST_F(ADriverInTrouble, ReportsATransmitKeyOnlyBehindTheReceiveKeyThatGoesWithIt) {
  portIs();
  start();
  kernel.refused["add rx 0"] = ENOSPC;
  cp->rxSakIs(sak(0, 1));
  cp->txSakIs(sak(0, 1));
  EXPECT_FALSE(report()->txSaStatus());
  kernel.refused.clear();
  runAt(1);
  EXPECT_TRUE(rx(0));
  EXPECT_TRUE(report()->txSaStatus());
}

TEST_F(ADriverInTrouble, ATransmitKeyThatTheKernelLostGoesOnFarAboveWhatItSent) {
  secured();
  device().secY.txSas[0].packetNumber = 1000;
  runAt(2);
  device().secY.txSas.clear();
  runAt(4);
  EXPECT_THAT(kernel.asked, ElementsAre("add tx 0"));
  EXPECT_EQ(device().secY.txSas.at(0).packetNumber, 1 + Macsecd::KeyHistory::kReserved);
}

TEST_F(ADriverInTrouble, ATransmitKeyOfWhichNobodyKnowsHowFarItWentIsntUsedAgain) {
  secured();
  cp->oldSakContextIs(Macsec::SakContext(sak(0, 1), 0, true, true, true, true));
  kernel.devices.clear();
  restart();
  EXPECT_TRUE(device().secY.txSas.empty());
  EXPECT_FALSE(report()->txSaStatus());
  EXPECT_TRUE(rx(0));
  EXPECT_EQ(world.logged("MACSEC_KEY_REFUSED"), 1u);
}

TEST_F(ADriverInTrouble, AKeyWhosePacketNumbersAreUsedUpIsntReportedAnyMore) {
  secured();
  device().secY.txSas[0].packetNumber = 0;
  device().secY.txSas[0].on = false;
  runAt(2);
  EXPECT_FALSE(report()->txSaStatus());
  EXPECT_THAT(kernel.asked, IsEmpty());
  EXPECT_EQ(world.logged("MACSEC_KEY_REFUSED"), 1u);
}

TEST_F(ADriverInTrouble, HasNoEntryWithoutMacsecInTheKernelUntilThereIs) {
  kernel.isPresent = false;
  portIs();
  start();
  EXPECT_FALSE(report());
  EXPECT_EQ(world.logged("MACSEC_KERNEL_MISSING"), 1u);
  for (double const delay : {1, 2, 4, 8, 16, 32, 60, 60}) {
    ASSERT_EQ(driver->nextTime(), world.time + delay);
    runAt(driver->nextTime());
  }
  EXPECT_FALSE(report());
  kernel.isPresent = true;
  runAt(driver->nextTime());
  ASSERT_TRUE(report());
  EXPECT_TRUE(report()->configured());
}

TEST_F(ADriverInTrouble, AKernelWithoutExtendedPacketNumbersIsToldOnce) {
  kernel.hasXpn = false;
  portIs();
  start();
  cp->rxSakIs(sak(0, 1));
  EXPECT_FALSE(report()->configured());
  EXPECT_FALSE(rx(0));
  EXPECT_EQ(world.logged("MACSEC_KERNEL_REFUSED"), 1u);
}

TEST_F(ADriverInTrouble, RefusesANameThatIsTooLongForTheKernel) {
  portIs();
  start({}, {.name = "sixteen.octets.a"});
  EXPECT_THAT(kernel.asked, IsEmpty());
  EXPECT_FALSE(report()->configured());
  EXPECT_EQ(world.logged("MACSEC_KEY_REFUSED"), 1u);
}

TEST_F(ADriverInTrouble, NamesTheBridgeInWhichTheInterfaceIs) {
  kernel.refused["make eth0-sec"] = EBUSY;
  Macsecd::Fault fault;
  portIs();
  start({.faultIs = [&](auto, auto const& told) { fault = told; },
         .masterOf =
             [](int) {
               return Master{"br0", "bridge"};
             }});
  EXPECT_THAT(fault.what, ::testing::StartsWith("eth0-sec: can't make the device: "));
  EXPECT_THAT(fault.remedy, ::testing::StartsWith("eth0 is a member of the bridge br0: "));
}

TEST_F(ADriverInTrouble, MakesADeviceAnewThatSomebodyHasDeleted) {
  secured();
  int const index = device().link.index;
  kernel.devices.clear();
  driver->deviceChanged(index, false);
  EXPECT_FALSE(driver->held(kIntf));
  EXPECT_EQ(driver->nextTime(), world.time);
  runAt(world.time);
  ASSERT_TRUE(driver->held(kIntf));
  EXPECT_EQ(driver->port(kIntf)->devicesMade(), 2u);
  EXPECT_TRUE(report()->txSaStatus());
}

TEST_F(ADriverInTrouble, HearsOfTheDeviceThatItHasNowAndOfNoFormerOne) {
  secured();
  int const former = device().link.index;
  kernel.devices.clear();
  driver->deviceChanged(former, false);
  runAt(world.time);
  int const now = device().link.index;
  ASSERT_NE(former, now);
  driver->deviceChanged(former, false);
  EXPECT_TRUE(driver->held(kIntf));
  driver->deviceChanged(now, false);
  EXPECT_FALSE(driver->held(kIntf));
}

TEST_F(ADriverInTrouble, TellsOfTheDeviceAndItsAssociationsWhenTheyChangeAndNotBefore) {
  int changes = 0;
  portIs();
  start({.changed = [&](auto) { ++changes; }});
  EXPECT_EQ(changes, 1) << "the device";
  cp->rxSakIs(sak(0, 1));
  EXPECT_EQ(changes, 2) << "it receives";
  cp->txSakIs(sak(0, 1));
  EXPECT_EQ(changes, 3) << "it sends";
  for (double time = 2; time < 20; time += 2) runAt(time);
  EXPECT_EQ(changes, 3);
}

TEST_F(ADriverInTrouble, WaitsForAChannelThatAnotherDeviceOfTheInterfaceHas) {
  ASSERT_TRUE(kernel.secYAdd({.name = "other", .parent = 3, .sci = 9}));
  ASSERT_TRUE(kernel.rxScAdd(kernel.device("other")->link.index, kPeer));
  secured();
  EXPECT_FALSE(rx(0));
  auto told = world.logs.at(0).arguments;
  EXPECT_THAT(told.back(), ::testing::HasSubstr("receives from the same peer"));
  told.pop_back();
  EXPECT_THAT(told, ElementsAre("add the receive channel", "eth0", "eth0-sec", "File exists"));
  kernel.devices.erase(kernel.devices.begin());
  runAt(1);
  EXPECT_TRUE(rx(0));
}

}  // namespace
}  // namespace Linux::Test
