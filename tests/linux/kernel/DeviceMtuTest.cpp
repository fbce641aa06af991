#include "tests/linux/kernel/KernelBench.h"

namespace Linux::Test {
namespace {

class TheMtuOfADevice : public KernelBench {
 protected:
  void startOn(uint32_t parentMtu, uint32_t mtu = 0) {
    portIs();
    start({.faultIs = [this](auto, auto const& told) { fault = told.what; }}, {.mtu = mtu});
    driver->interfaceMtuIs(kIntf, parentMtu);
  }

  std::string fault;
};

TEST_F(TheMtuOfADevice, IsBy32LessThanThatOfItsInterface) {
  startOn(1500);
  EXPECT_EQ(device().mtu, 1468u);
  EXPECT_EQ(fault, "");
}

TEST_F(TheMtuOfADevice, FollowsThatOfItsInterfaceUpAndDown) {
  startOn(1500);
  driver->interfaceMtuIs(kIntf, 9000);
  EXPECT_EQ(device().mtu, 8968u);
  driver->interfaceMtuIs(kIntf, 1532);
  EXPECT_EQ(device().mtu, 1500u);
}

TEST_F(TheMtuOfADevice, IsTheOperatorsUntilThatOfItsInterfaceChanges) {
  startOn(1500);
  device().mtu = 1400;
  runAt(2);
  EXPECT_EQ(device().mtu, 1400u);
  driver->interfaceMtuIs(kIntf, 1532);
  EXPECT_EQ(device().mtu, 1500u);
}

TEST_F(TheMtuOfADevice, IsWhatTheConfigurationSays) {
  startOn(9000, 1400);
  EXPECT_EQ(device().mtu, 1400u);
  driver->deviceIs(kIntf, {.mtu = 2000});
  EXPECT_EQ(device().mtu, 2000u);
  driver->deviceIs(kIntf, {});
  EXPECT_EQ(device().mtu, 8968u);
}

TEST_F(TheMtuOfADevice, ThatIsTooLargeIsToldOnceAndIsAsLargeAsCanBe) {
  startOn(1500, 1500);
  EXPECT_EQ(device().mtu, 1468u);
  EXPECT_EQ(fault,
            "eth0-sec: can't have the MTU 1500: interface eth0 has 1500, and MACsec takes 32 "
            "octets of it");
  runAt(2);
  runAt(4);
  ASSERT_EQ(world.logged("MACSEC_MTU_TOO_LARGE"), 1u);
  EXPECT_EQ(
      world.logs[0].text,
      "The device eth0-sec can't have the MTU 1500, for interface eth0 has 1500; it has 1468");
  driver->interfaceMtuIs(kIntf, 1532);
  EXPECT_EQ(device().mtu, 1500u);
  EXPECT_EQ(fault, "");
}

TEST_F(TheMtuOfADevice, StandsBehindNoKeyWhenTheKernelRefusesIt) {
  kernel.mostMtu = 100;
  startOn(1500);
  cp->rxSakIs(sak(0, 1));
  cp->txSakIs(sak(0, 1));
  EXPECT_TRUE(report()->txSaStatus());
  EXPECT_THAT(fault, ::testing::HasSubstr("set the MTU of the device: "));
  EXPECT_EQ(world.logged("MACSEC_KERNEL_REFUSED"), 1u);
}

TEST_F(TheMtuOfADevice, IsSetAgainOnADeviceThatIsMadeAnew) {
  startOn(1500, 1400);
  driver->deviceIs(kIntf, {.name = "uplink", .mtu = 1400});
  EXPECT_EQ(kernel.device("uplink")->mtu, 1400u);
  kernel.devices.clear();
  runAt(2);
  EXPECT_EQ(kernel.device("uplink")->mtu, 1400u);
}

}  // namespace
}  // namespace Linux::Test
