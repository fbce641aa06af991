#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "linux/kernel/KernelDriver.h"
#include "model/Factories.h"
#include "platform/WardcodeLib.h"
#include "tests/linux/kernel/FakeKernel.h"
#include "tests/support/TestWorld.h"

namespace Linux::Test {

/// A driver between a status tree that the test writes and a fake kernel.
class KernelBench : public ::testing::Test {
 protected:
  static constexpr SciNumber kPeer = 0x02000000000b0001;

  KernelBench() {
    uint8_t const host[WardcodeLib::kHostKeySize] = {7};
    WardcodeLib::hostKeyIs(host);
  }

  ~KernelBench() override { EXPECT_THAT(kernel.nonces.repeats(), ::testing::IsEmpty()); }

  static Macsec::Sak sak(uint8_t an, uint32_t keyNum, size_t digits = 32) {
    Macsec::Sak sak{Macsec::AssociationNumber(an)};
    sak.keyMsgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
    sak.keyNumIs(keyNum);
    sak.saltIs("e630e81a48de86a21c66fa6d");
    sak.keyIs(WardcodeLib::doEncodeKey(Vesk::String8::secret(std::string(digits, '5'))));
    return sak;
  }
  static Macsec::Sci sci(uint8_t last) { return {Lumo::EthAddr({2, 0, 0, 0, 0, last}), 1}; }

  void portIs(Macsec::CipherSuite suite = Macsec::CipherSuite::gcmAesXpn128) {
    status->portStatusIs(kIntf)->mySciIs(sci(10));
    cp = status->cpStatusIs(kIntf, Macsec::MacsecParams(suite, true));
    cp->mySsciIs({sci(10), "00000002"});
    cp->peerSsciIs({sci(11), "00000001"});
  }
  void start(KernelDriverOptions const& options = {}, DeviceOptions const& of = {}) {
    driver.emplace(status, slice, kernel, options);
    driver->deviceIs(kIntf, of);
    driver->interfaceIs(kIntf, 3);
  }
  void restart() {
    driver.reset();
    slice = Macsec::macSecStatusFactory("kernel");
    kernel.asked.clear();
    start();
  }
  /// A port with a key in use, and nothing asked of the kernel since.
  void secured(KernelDriverOptions const& options = {}) {
    portIs();
    start(options);
    cp->rxSakIs(sak(0, 1));
    cp->txSakIs(sak(0, 1));
    kernel.asked.clear();
  }
  void runAt(double time) {
    world.time = time;
    driver->run();
  }
  Vesk::Ptr<Macsec::MacSecIntfStatus> report() const { return slice->status(kIntf); }
  Vesk::Ptr<Macsec::SaStatus> rx(uint8_t an) const {
    return report()->rxSaStatus(Macsec::AssociationNumber(an));
  }
  FakeKernel::Device& device() { return *kernel.device("eth0-sec"); }
  std::vector<HeldSa>& rxSas() { return FakeKernel::rxSc(device(), kPeer)->sas; }

  Lumo::IntfId const kIntf{"eth0"};
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  FakeKernel kernel;
  Vesk::Ptr<Macsec::Status> status = Macsec::statusFactory("status");
  Vesk::Ptr<Macsec::MacSecStatus> slice = Macsec::macSecStatusFactory("kernel");
  Vesk::Ptr<Macsec::CpStatus> cp;
  std::optional<KernelDriver> driver;
};

}  // namespace Linux::Test
