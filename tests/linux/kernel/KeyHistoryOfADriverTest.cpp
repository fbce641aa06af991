#include "linux/kernel/KernelDriver.h"
#include "tests/linux/kernel/KernelBench.h"

// A key that comes back, whatever has happened to device, interface and process since.

namespace Linux::Test {
namespace {

using ::testing::IsEmpty;

constexpr uint64_t kReserved = Macsecd::KeyHistory::kReserved;

class ADriverWithAHistory : public KernelBench {
 protected:
  /// A port with a key in use, under a history that outlives the driver.
  void securedWithHistory() {
    portIs();
    start(options());
    bothSas(1);
  }
  KernelDriverOptions options() {
    return {.history = &history, .keyIsSpent = [this](Lumo::IntfId, Macsecd::SakId const& id) {
              spent.push_back(id.number);
            }};
  }
  void bothSas(uint32_t keyNum) {
    uint8_t const an = keyNum % 4;
    cp->rxSakIs(sak(an, keyNum));
    cp->txSakIs(sak(an, keyNum));
  }
  /// The interface goes, with its device, and comes again.
  void interfaceAnew() {
    kernel.devices.clear();
    driver->interfaceDel(kIntf);
    driver->interfaceIs(kIntf, 4);
  }
  uint64_t firstSent() { return device().secY.txSas.at(0).packetNumber; }

  Macsecd::KeyHistory history;
  std::vector<uint32_t> spent;
};

TEST_F(ADriverWithAHistory, GoesOnWithTheKeyOfAnInterfaceThatWasMadeAnew) {
  securedWithHistory();
  interfaceAnew();
  EXPECT_EQ(firstSent(), 1 + kReserved);
  EXPECT_THAT(spent, IsEmpty());
}

TEST_F(ADriverWithAHistory, GoesOnWithTheKeyOfAFormerProcessWhoseDeviceIsGone) {
  securedWithHistory();
  kernel.devices.clear();
  driver.reset();
  slice = Macsec::macSecStatusFactory("kernel");
  start(options());
  EXPECT_EQ(firstSent(), 1 + kReserved);
}

TEST_F(ADriverWithAHistory, NeverSendsAgainWithAKeyOfLongAgo) {
  securedWithHistory();
  for (uint32_t keyNum = 2; keyNum <= 200; ++keyNum) bothSas(keyNum);
  bothSas(1);
  for (HeldSa const& sa : device().secY.txSas) EXPECT_EQ(sa.keyId[15], 200);
  EXPECT_FALSE(report()->txSaStatus());
  EXPECT_THAT(spent, ::testing::ElementsAre(1));
  bothSas(201);
  EXPECT_EQ(firstSent(), 1u);
  EXPECT_TRUE(report()->txSaStatus());
}

TEST_F(ADriverWithAHistory, NeverSendsWithAKeyUnderAnotherSsci) {
  securedWithHistory();
  cp->peerSsciIs({sci(9), "00000002"});
  cp->mySsciIs({sci(10), "00000001"});
  EXPECT_TRUE(device().secY.txSas.empty());
  EXPECT_THAT(spent, ::testing::ElementsAre(1));
}

TEST_F(ADriverWithAHistory, KnowsItsSsciUnderAKeyThatItOnlyReceivedWith) {
  portIs();
  start(options());
  cp->rxSakIs(sak(1, 1));
  cp->mySsciIs({sci(10), "00000001"});
  cp->txSakIs(sak(1, 1));
  EXPECT_TRUE(device().secY.txSas.empty());
  EXPECT_THAT(spent, ::testing::ElementsAre(1));
}

TEST_F(ADriverWithAHistory, TakesNoFrameTwiceWhenAReceiveKeyComesBack) {
  securedWithHistory();
  rxSas().at(0).packetNumber = 501;
  runAt(2);
  interfaceAnew();
  EXPECT_EQ(rxSas().at(0).packetNumber, 501u);
}

TEST_F(ADriverWithAHistory, DoesNotGoFurtherAheadWhenTheKernelRefusesTheKeyForAWhile) {
  portIs();
  start(options());
  cp->rxSakIs(sak(1, 1));
  kernel.refused["add tx 1"] = ENOMEM;
  cp->txSakIs(sak(1, 1));
  for (int i = 0; i < 20; ++i) runAt(driver->nextTime());
  kernel.refused.clear();
  while (device().secY.txSas.empty()) runAt(driver->nextTime());
  EXPECT_EQ(firstSent(), 1u);
}

TEST_F(ADriverWithAHistory, NeverSendsWithAKeyThatWasSpentBeforeTheKernelTookIt) {
  portIs();
  start(options());
  cp->rxSakIs(sak(1, 1));
  kernel.refused["add tx 1"] = ENOMEM;
  cp->txSakIs(sak(1, 1));
  history.spend(kIntf, *Macsecd::SakId::of(cp->txSak()));
  kernel.refused.clear();
  for (int i = 0; i < 20; ++i) runAt(driver->nextTime());
  EXPECT_TRUE(device().secY.txSas.empty());
  EXPECT_THAT(spent, ::testing::Each(1));
  EXPECT_FALSE(spent.empty());
}

TEST_F(ADriverWithAHistory, SendsNothingWhileItsTransmitKeyIsHeldBack) {
  securedWithHistory();
  driver->transmitHeldIs(kIntf, true);
  EXPECT_TRUE(device().secY.txSas.empty());
  EXPECT_FALSE(report()->txSaStatus());
  EXPECT_FALSE(rxSas().empty());
  bothSas(2);
  EXPECT_TRUE(device().secY.txSas.empty());
  driver->transmitHeldIs(kIntf, false);
  EXPECT_EQ(device().secY.txSas.at(0).keyId[15], 2);
  EXPECT_TRUE(report()->txSaStatus());
}

}  // namespace
}  // namespace Linux::Test
