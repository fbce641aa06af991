#include "linux/kernel/KernelReader.h"

#include <set>

#include "linux/process/Limits.h"
#include "tests/linux/kernel/KernelBench.h"

namespace Linux::Test {
namespace {

using Macsec::CipherSuite;

class AReadingOfTheKernel : public KernelBench {};

/// Secured ports, of which the kernel has received frames.
class ManyPortsUnderDelayProtection : public KernelBench {
 protected:
  static constexpr int kPorts = 20;

  ManyPortsUnderDelayProtection() {
    driver.emplace(status, slice, kernel);
    for (uint8_t i = 0; i < kPorts; ++i) portIs(i);
    receivedIs(200);
    runAt(2);
    kernel.asked.clear();
  }
  void portIs(uint8_t number) {
    Lumo::IntfId const intfId{Vesk::String8("eth" + std::to_string(number))};
    auto const mySci = sci(static_cast<uint8_t>(100 + number));
    status->portStatusIs(intfId)->mySciIs(mySci);
    ports.push_back(
        status->cpStatusIs(intfId, Macsec::MacsecParams(CipherSuite::gcmAesXpn128, true)));
    ports.back()->mySsciIs({mySci, "00000002"});
    ports.back()->peerSsciIs({sci(11), "00000001"});
    driver->interfaceIs(intfId, 3 + number);
    ports.back()->rxSakIs(sak(0, 1));
  }
  void receivedIs(uint64_t next) {
    for (auto& device : kernel.devices) device.secY.rxScs.at(0).sas.at(0).packetNumber = next;
  }
  void told(uint32_t lowest) {
    for (auto const& port : ports) port->rxLPNIs({lowest, Macsec::AssociationNumber(0)});
  }
  /// Of all ports.
  std::set<uint64_t> lowest() const {
    std::set<uint64_t> lowest;
    for (auto const& device : kernel.devices) {
      lowest.insert(device.secY.rxScs.at(0).sas.at(0).packetNumber);
    }
    return lowest;
  }

  std::vector<Vesk::Ptr<Macsec::CpStatus>> ports;
};

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

TEST_F(ManyPortsUnderDelayProtection, AreReadOnceForAllThatWereToldALowestNumber) {
  receivedIs(1000);
  int const before = kernel.dumps;
  told(900);
  runAt(driver->nextTime());
  EXPECT_EQ(world.time, 2 + Limits::kRaisePeriod);
  EXPECT_EQ(kernel.dumps, before + 2) << "at once for the first one, and then for all others";
  EXPECT_THAT(kernel.asked, ::testing::IsEmpty());
  EXPECT_EQ(driver->nextTime(), 4) << "the next poll";
}

TEST_F(ManyPortsUnderDelayProtection, AreRaisedWhereFramesWereLost) {
  told(300);
  runAt(driver->nextTime());
  EXPECT_THAT(lowest(), ::testing::ElementsAre(300));
  EXPECT_EQ(kernel.asked.size(), size_t{kPorts});
}

TEST_F(ManyPortsUnderDelayProtection, AreNeverLoweredBelowWhatCameInSinceTheReading) {
  told(300);
  kernel.afterDump = [this] { receivedIs(400); };
  runAt(driver->nextTime());
  EXPECT_THAT(lowest(), ::testing::ElementsAre(400));
}

TEST_F(ManyPortsUnderDelayProtection, AreNotRaisedUnderAKeyThatCameLater) {
  told(300);
  for (auto const& port : ports) port->rxSakIs(sak(0, 2));
  runAt(driver->nextTime());
  EXPECT_THAT(lowest(), ::testing::ElementsAre(1));
}

}  // namespace
}  // namespace Linux::Test
