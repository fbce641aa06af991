#include "linux/kernel/KernelReader.h"

#include "tests/linux/kernel/KernelBench.h"

namespace Linux::Test {
namespace {

using Macsec::CipherSuite;

class AReadingOfTheKernel : public KernelBench {};

TEST_F(AReadingOfTheKernel, ServesAllPortsOfATurn) {
  driver.emplace(nullptr, slice, kernel);
  constexpr int kPorts = 3;
  for (int i = 0; i < kPorts; ++i) {
    Lumo::IntfId const intfId{Vesk::String8("eth" + std::to_string(i))};
    status->portStatusIs(intfId)->mySciIs(sci(static_cast<uint8_t>(10 + i)));
    status->cpStatusIs(intfId, Macsec::MacsecParams(CipherSuite::gcmAesXpn128, true));
    driver->interfaceIs(intfId, 3 + i);
  }
  driver->follow(status);
  EXPECT_EQ(kernel.devices.size(), kPorts) << "and one that is made is read alone";
  EXPECT_EQ(kernel.dumps, 1);
  driver.emplace(status, slice, kernel);
  {
    auto const turn = driver->round();
    for (int i = 0; i < kPorts; ++i) {
      driver->interfaceIs(Lumo::IntfId{Vesk::String8("eth" + std::to_string(i))}, 3 + i);
    }
  }
  EXPECT_EQ(driver->counts().devicesAdopted + driver->counts().devicesMade, 0u);
  EXPECT_TRUE(driver->held(kIntf));
  EXPECT_EQ(kernel.dumps, 2);
  driver->interfaceDel(Lumo::IntfId("eth1"));
  driver->interfaceIs(Lumo::IntfId("eth1"), 4);
  EXPECT_EQ(kernel.dumps, 3) << "outside of a turn each reads for itself";
}

TEST_F(AReadingOfTheKernel, IsMadeAgainInATurnInWhichADeviceWent) {
  secured();
  {
    auto const turn = driver->round();
    driver->interfaceIs(Lumo::IntfId("eth1"), 4);
    status->portStatusIs(Lumo::IntfId("eth1"))->mySciIs(sci(12));
    status->cpStatusIs(Lumo::IntfId("eth1"), Macsec::MacsecParams(CipherSuite::gcmAesXpn128, true));
    driver->interfaceDel(kIntf);
    driver->interfaceIs(kIntf, 3);
  }
  ASSERT_TRUE(kernel.device("eth0-sec"));
  EXPECT_EQ(driver->held(kIntf)->index, device().link.index);
  EXPECT_EQ(driver->counts().refusals, 0u);
}

}  // namespace
}  // namespace Linux::Test
