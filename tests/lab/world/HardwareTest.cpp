#include "lab/world/Hardware.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "lab/world/SwitchWorld.h"
#include "model/Factories.h"

namespace Lab {
namespace {

using Macsec::AssociationNumber;
using Macsec::Sak;

class HardwareTest : public testing::Test {
 protected:
  HardwareTest() : world_(clock_, 1, 0, {}), scope_(world_) {
    hardware_.follow(status_);
    cpStatus_ = status_->cpStatusIs(intf_, Macsec::MacsecParams());
  }

  static Sak sak(uint8_t an, uint32_t number) {
    Sak sak{AssociationNumber(an)};
    sak.keyMsgIdIs("a1a2a3a4a5a6a7a8a9aaabac");
    sak.keyNumIs(number);
    return sak;
  }
  // Numbers of the keys installed: receive by association number, then transmit; 0 is none.
  std::vector<uint32_t> installed() {
    auto const entry = hardware_.slice()->status(intf_);
    std::vector<uint32_t> numbers;
    for (uint8_t an = 0; an < 2; ++an) {
      auto const sa = entry->rxSaStatus(AssociationNumber(an));
      numbers.push_back(sa ? sa->keyNum() : 0);
    }
    numbers.push_back(entry->txSaStatus() ? entry->txSaStatus()->keyNum() : 0);
    return numbers;
  }
  std::vector<uint32_t> installedAt(double time) {
    clock_.now = time;
    while (hardware_.answerOne()) {
    }
    return installed();
  }

  Clock clock_;
  SwitchWorld world_;
  Vesk::WorldScope scope_;
  Lumo::IntfId const intf_ = Lumo::IntfId("Ethernet1");
  struct Nowhere final : Codec::FrameSink {
    void send(Lumo::IntfId, std::span<uint8_t const>) override {}
  } nowhere_;
  Macsecd::Host host_{world_, "switch", nowhere_, {.emulateHardware = false}};
  Vesk::Ptr<Vesk::Dir> slices_ = host_.slices();
  Vesk::Ptr<Macsec::Status> status_ = Macsec::statusFactory("status");
  Macsecd::NonceWatch nonces_;
  Hardware hardware_{host_, {intf_}, "A", nonces_};
  Vesk::Ptr<Macsec::CpStatus> cpStatus_;
};

using testing::ElementsAre;

TEST_F(HardwareTest, IsASliceWithAnEntryForEachInterface) {
  auto const slice = Vesk::ptrCast<Macsec::MacSecStatus>(slices_->entry("lab"));
  ASSERT_TRUE(slice);
  EXPECT_EQ(slice, hardware_.slice());
  EXPECT_TRUE(slice->status(intf_));
}

TEST_F(HardwareTest, AnswersWithinTheRequestWhenNormal) {
  cpStatus_->rxSakIs(sak(1, 5));
  EXPECT_THAT(installed(), ElementsAre(0, 5, 0));
  cpStatus_->txSakIs(sak(1, 5));
  EXPECT_THAT(installed(), ElementsAre(0, 5, 5));
  EXPECT_TRUE(std::isinf(hardware_.nextTime()));
}

TEST_F(HardwareTest, ReplacesAKeyAndKeepsOneThatIsNoLongerAskedFor) {
  cpStatus_->rxSakIs(sak(1, 5));
  cpStatus_->rxSakIs(sak(1, 6));
  EXPECT_THAT(installed(), ElementsAre(0, 6, 0));
  cpStatus_->rxSakDel(AssociationNumber(1));
  EXPECT_THAT(installed(), ElementsAre(0, 6, 0));
}

TEST_F(HardwareTest, AnswersEachRequestAfterItsDelayWhenSlow) {
  hardware_.moodIs(HardwareMood::slow, 3);
  clock_.now = 1;
  cpStatus_->rxSakIs(sak(0, 1));
  clock_.now = 2;
  cpStatus_->txSakIs(sak(0, 1));
  EXPECT_EQ(hardware_.nextTime(), 4);
  EXPECT_THAT(installedAt(3.9), ElementsAre(0, 0, 0));
  EXPECT_THAT(installedAt(4), ElementsAre(1, 0, 0));
  EXPECT_EQ(hardware_.nextTime(), 5);
  EXPECT_THAT(installedAt(5), ElementsAre(1, 0, 1));
}

// The answer for the former transmit key finds that another one is asked for.
TEST_F(HardwareTest, TellsOfATransmitKeyBehindTheReceiveKeyOfTheSameNumber) {
  hardware_.moodIs(HardwareMood::slow, 3);
  cpStatus_->txSakIs(sak(0, 1));
  clock_.now = 2;
  cpStatus_->rxSakIs(sak(1, 2));
  cpStatus_->txSakIs(sak(1, 2));
  EXPECT_THAT(installedAt(4), ElementsAre(0, 0, 0));
  EXPECT_THAT(installedAt(5), ElementsAre(0, 2, 2));
}

TEST_F(HardwareTest, DoesNotAnswerWhenSilentAndCatchesUpWhenNormal) {
  hardware_.moodIs(HardwareMood::silent, 0);
  cpStatus_->rxSakIs(sak(0, 1));
  cpStatus_->txSakIs(sak(0, 1));
  EXPECT_TRUE(std::isinf(hardware_.nextTime()));
  EXPECT_THAT(installedAt(1000), ElementsAre(0, 0, 0));
  hardware_.moodIs(HardwareMood::normal, 0);
  EXPECT_THAT(installedAt(1000), ElementsAre(1, 0, 1));
}

TEST_F(HardwareTest, InstallsNothingThatWasWithdrawnMeanwhile) {
  hardware_.moodIs(HardwareMood::silent, 0);
  cpStatus_->rxSakIs(sak(0, 1));
  cpStatus_->rxSakIs(sak(1, 2));
  cpStatus_->rxSakDel(AssociationNumber(0));
  hardware_.moodIs(HardwareMood::slow, 1);
  EXPECT_THAT(installedAt(1), ElementsAre(0, 2, 0));
}

// A reactor like those of the engine, which read the SA as it appears.
struct Reader final : Vesk::Reactor<Macsec::MacSecIntfStatus const, HardwareTest, Reader> {
  using Reactor::Reactor;
  void onTxSaStatus() override { seen.push_back(notifier()->txSaStatus()->lpn()); }
  std::vector<uint32_t> seen;
};

TEST_F(HardwareTest, ShowsAPacketNumberWithTheNextTransmitSa) {
  Vesk::Ptr<Reader> reader = Vesk::make<Reader>(*this, hardware_.slice()->status(intf_));
  hardware_.packetNumberIs(intf_, 0xc0000000);
  cpStatus_->txSakIs(sak(0, 1));
  cpStatus_->txSakIs(sak(1, 2));
  EXPECT_THAT(reader->seen, ElementsAre(0xc0000000, 0));
  Vesk::retire(reader);
}

TEST_F(HardwareTest, ShowsAPacketNumberAtOnceForASaThatIsAskedForEvenWhenSilent) {
  Vesk::Ptr<Reader> reader = Vesk::make<Reader>(*this, hardware_.slice()->status(intf_));
  hardware_.moodIs(HardwareMood::silent, 0);
  cpStatus_->txSakIs(sak(0, 1));
  hardware_.packetNumberIs(intf_, 77);
  EXPECT_THAT(reader->seen, ElementsAre(77));
  hardware_.packetNumberIs(intf_, 78);
  EXPECT_EQ(hardware_.slice()->status(intf_)->txSaStatus()->lpn(), 78u);
  Vesk::retire(reader);
}

TEST_F(HardwareTest, TakesAPacketNumberBeforeItFollowsAnything) {
  Hardware early(host_, {intf_}, "B", nonces_);
  early.packetNumberIs(intf_, 77);
  EXPECT_FALSE(early.slice()->status(intf_)->txSaStatus());
}

TEST_F(HardwareTest, KeepsAPacketNumberForTheNextKeyWhileTheOneThatIsAskedForIsHeldBack) {
  cpStatus_->txSakIs(sak(0, 1));
  host_.transmitHoldInputDir()->forwardingModelInputIs(
      intf_, Interface::intfForwardingModelUnauthorized());
  hardware_.packetNumberIs(intf_, 77);
  EXPECT_THAT(installed(), ElementsAre(0, 0, 0));
  host_.transmitHoldInputDir()->forwardingModelInputDel(intf_);
  EXPECT_EQ(hardware_.slice()->status(intf_)->txSaStatus()->lpn(), 77u);
}

TEST_F(HardwareTest, KeepsWhatIsInstalledWhenItFollowsACopyOfTheTree) {
  cpStatus_->rxSakIs(sak(0, 1));
  cpStatus_->txSakIs(sak(0, 1));
  auto const entry = hardware_.slice()->status(intf_);
  auto const rx = entry->rxSaStatus(AssociationNumber(0));
  auto const tx = entry->txSaStatus();
  auto const again = Macsec::statusFactory("status");
  auto const cpStatus = again->cpStatusIs(intf_, Macsec::MacsecParams());
  cpStatus->rxSakIs(sak(0, 1));
  cpStatus->txSakIs(sak(0, 1));
  hardware_.follow(again);
  EXPECT_EQ(entry->rxSaStatus(AssociationNumber(0)), rx);
  EXPECT_EQ(entry->txSaStatus(), tx);
  cpStatus->rxSakIs(sak(1, 2));
  EXPECT_THAT(installed(), ElementsAre(1, 2, 1));
}

}  // namespace
}  // namespace Lab
