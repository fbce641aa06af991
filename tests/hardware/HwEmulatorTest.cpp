#include <gtest/gtest.h>

#include "hardware/HwEmulator.h"
#include "model/Factories.h"
#include "tests/support/Port.h"

namespace Macsec {
namespace {

using Support::sak;

class Emulator : public ::testing::Test {
 protected:
  Emulator() {
    hw = MacSecIntfStatus::MacSecIntfStatusIs(kIntf);
    dir->statusIs(hw);
  }
  void begin() { emulator = hwEmulatorFactory(status, dir); }
  Vesk::Ptr<CpStatus> cpStatus() { return status->cpStatusIs(kIntf, MacsecParams()); }
  Vesk::Ptr<SaStatus> rx(uint8_t an) const { return hw->rxSaStatus(AssociationNumber(an)); }

  Lumo::IntfId const kIntf{"Ethernet1"};
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  Vesk::Ptr<Status> status = statusFactory("status");
  Vesk::Ptr<MacSecIntfStatusPtrDir> dir = macSecIntfStatusPtrDirFactory("hardware");
  Vesk::Ptr<MacSecIntfStatus> hw;
  Vesk::Ptr<HwEmulator> emulator;
};

TEST_F(Emulator, ReportsAKeyAskedForReceptionAtOnce) {
  begin();
  EXPECT_TRUE(emulator->initialized());
  cpStatus()->rxSakIs(sak(1, 7));
  ASSERT_TRUE(rx(1));
  EXPECT_EQ(rx(1)->associationNumber(), AssociationNumber(1));
  EXPECT_EQ(rx(1)->keyId(), sak().keyMsgId());
  EXPECT_EQ(rx(1)->keyNum(), 7u);
  EXPECT_EQ(rx(1)->lpn(), 0u);
  EXPECT_FALSE(hw->configured());
}

TEST_F(Emulator, LeavesAnInterfaceAloneThatTheHardwareNoLongerKnows) {
  begin();
  auto const asked = cpStatus();
  dir->statusDel(kIntf);
  asked->rxSakIs(sak(1, 7));
  asked->txSakIs(sak(1, 7));
  EXPECT_FALSE(rx(1));
  EXPECT_FALSE(hw->txSaStatus());
}

TEST_F(Emulator, ReplacesTheReportOfAnAssociationNumberThatIsUsedAgain) {
  begin();
  cpStatus()->rxSakIs(sak(1, 7));
  auto const former = rx(1);
  cpStatus()->rxSakIs(sak(1, 8));
  EXPECT_NE(rx(1), former);
  EXPECT_EQ(rx(1)->keyNum(), 8u);
  Sak salted = sak(1, 8);
  salted.saltIs("00");
  auto const second = rx(1);
  cpStatus()->rxSakIs(salted);
  EXPECT_NE(rx(1), second);
}

TEST_F(Emulator, KeepsTheReportOfAKeyThatHasGone) {
  begin();
  cpStatus()->rxSakIs(sak(1, 7));
  cpStatus()->txSakIs(sak(1, 7));
  cpStatus()->rxSakDel(AssociationNumber(1));
  cpStatus()->txSakIs(Sak());
  EXPECT_TRUE(rx(1));
  EXPECT_TRUE(hw->txSaStatus());
  status->cpStatusDel(kIntf);
  EXPECT_TRUE(rx(1));
}

TEST_F(Emulator, ReportsTheKeyAskedForTransmit) {
  begin();
  cpStatus()->txSakIs(sak(2, 9));
  ASSERT_TRUE(hw->txSaStatus());
  EXPECT_EQ(hw->txSaStatus()->associationNumber(), AssociationNumber(2));
  EXPECT_EQ(hw->txSaStatus()->keyId(), sak().keyMsgId());
  EXPECT_EQ(hw->txSaStatus()->keyNum(), 9u);
  auto const former = hw->txSaStatus();
  cpStatus()->txSakIs(sak(3, 10));
  EXPECT_NE(hw->txSaStatus(), former);
}

TEST_F(Emulator, IgnoresAnEmptyKey) {
  begin();
  cpStatus()->rxSakIs(Sak());
  EXPECT_FALSE(rx(0));
  EXPECT_FALSE(hw->txSaStatus());
}

TEST_F(Emulator, CatchesUpWithKeysThatStandWhenItStartsOrWhenThePortComes) {
  cpStatus()->rxSakIs(sak(1, 7));
  cpStatus()->txSakIs(sak(1, 7));
  begin();
  EXPECT_TRUE(rx(1));
  EXPECT_TRUE(hw->txSaStatus());
}

TEST_F(Emulator, IsDeafAfterItsEnd) {
  begin();
  emulator = nullptr;
  cpStatus()->rxSakIs(sak(1, 7));
  EXPECT_FALSE(rx(1));
}

}  // namespace
}  // namespace Macsec
