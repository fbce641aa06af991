#include "tests/linux/kernel/KernelBench.h"

namespace Linux::Test {
namespace {

using Macsec::CipherSuite;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A device that is there whether there is a port or not.
class AStandingDevice : public KernelBench {
 protected:
  static constexpr SciNumber kMine = 0x02000000000a0001;

  static DeviceOptions standing(uint64_t cipher = kGcmAesXpn128) {
    return {.standing = DeviceKind{kMine, cipher, true}};
  }
  void startStanding() {
    start({.dormant = true}, standing());
    runAt(0);
  }
  void restartStanding() {
    driver.reset();
    slice = Macsec::macSecStatusFactory("kernel");
    kernel.asked.clear();
    startStanding();
  }
  void securedStanding() {
    portIs();
    start({.dormant = true}, standing());
    cp->rxSakIs(sak(0, 1));
    cp->txSakIs(sak(0, 1));
    kernel.asked.clear();
  }
};

TEST_F(AStandingDevice, IsThereAndDormantBeforeTheFirstCarrierAndTheFirstKey) {
  startStanding();
  EXPECT_THAT(kernel.takeAsked(), ElementsAre("make eth0-sec", "up", "unauthorized"));
  EXPECT_EQ(device().secY.sci, kMine);
  EXPECT_FALSE(report()->configured());
  portIs();
  EXPECT_THAT(kernel.asked, ElementsAre("authorized"));
  EXPECT_TRUE(report()->configured());
}

TEST_F(AStandingDevice, StaysWithoutKeysAndDormantWhenThePortGoes) {
  securedStanding();
  status->cpStatusDel(kIntf);
  runAt(driver->nextTime());
  EXPECT_THAT(kernel.asked,
              ElementsAre("unauthorized", "remove channel", "off tx 0", "remove tx 0"));
  EXPECT_FALSE(report()->configured());
  EXPECT_FALSE(report()->txSaStatus());
}

TEST_F(AStandingDevice, TakesTheKeysOfThePortThatComesBack) {
  securedStanding();
  int const index = device().link.index;
  status->cpStatusDel(kIntf);
  runAt(driver->nextTime());
  portIs();
  cp->rxSakIs(sak(1, 2));
  cp->txSakIs(sak(1, 2));
  EXPECT_EQ(device().link.index, index);
  EXPECT_TRUE(report()->txSaStatus());
}

TEST_F(AStandingDevice, ThatSomebodyDeletesIsMadeAnew) {
  startStanding();
  kernel.devices.clear();
  runAt(driver->nextTime());
  ASSERT_TRUE(kernel.device("eth0-sec"));
  EXPECT_EQ(device().authorized, false);
  EXPECT_EQ(driver->counts().devicesMade, 2u);
  runAt(driver->nextTime());
  EXPECT_EQ(driver->counts().devicesMade, 2u);
}

TEST_F(AStandingDevice, IsSwitchedOnWhenItsInterfaceIs) {
  kernel.isParentUp = false;
  startStanding();
  EXPECT_FALSE(device().up);
  restartStanding();
  kernel.isParentUp = true;
  runAt(driver->nextTime());
  EXPECT_TRUE(device().up);
  EXPECT_THAT(world.logs, IsEmpty());
}

TEST_F(AStandingDevice, OfAnotherKindIsMadeAnewWithoutAPort) {
  startStanding();
  driver->deviceIs(kIntf, standing(kGcmAesXpn256));
  EXPECT_EQ(device().secY.cipher, kGcmAesXpn256);
}

TEST_F(AStandingDevice, GoesWithItsInterfaceAndAtTheEnd) {
  startStanding();
  driver->interfaceDel(kIntf);
  EXPECT_THAT(kernel.devices, IsEmpty());
  driver->interfaceIs(kIntf, 3);
  runAt(driver->nextTime());
  EXPECT_TRUE(kernel.device("eth0-sec"));
  driver->removeAll();
  EXPECT_THAT(kernel.devices, IsEmpty());
}

TEST_F(AStandingDevice, IsTakenUpUnderItsFormerNameBeforeThereIsAPort) {
  startStanding();
  device().link.name = "eth0.sec";
  restartStanding();
  runAt(driver->nextTime());
  EXPECT_EQ(kernel.devices.size(), 1u);
  EXPECT_EQ(world.logged("MACSEC_DEVICE_OF_FORMER_NAME"), 1u);
}

}  // namespace
}  // namespace Linux::Test
