#include "model/MkaPduWrappers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Hex.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

namespace Macsec {
namespace {

/// A world that keeps the texts of level 8.
class TracingWorld final : public Vesk::World {
 public:
  double now() const override { return 0; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t>) override {}
  void syslog(Vesk::LogMessage const&) override {}
  void trace(Vesk::TraceRecord const& record) override {
    if (record.level == 8) texts.push_back(std::string(record.handle) + " " + record.text);
  }
  void exit(int) override {}

  std::vector<std::string> texts;
};

constexpr size_t kPosition = 3;

/// A packet of zeros that stands at position 3.
Vesk::Ptr<Lumo::Pkt> packet() {
  auto pkt = Vesk::make<Lumo::Pkt>(size_t{64});
  pkt->positionIs(kPosition);
  return pkt;
}

/// What stands in the packet from its position on.
std::string octets(Vesk::Ptr<Lumo::Pkt> const& pkt, size_t size) {
  return hexString(pkt->bytes().subspan(kPosition, size)).charPtr();
}

TEST(MkaPduWrappers, EachTracesTheSignatureOfHandlePktWhenItIsMade) {
  TracingWorld world;
  Vesk::WorldScope scope(world);
  Vesk::TraceHandle::streamLevelsIs("Macsec", Vesk::kAllTraceLevels);
  eapolWrapperFactory(packet());
  basicParameterSetWrapperFactory(packet());
  peerInfoParameterWrapperFactory(packet());
  peerListSetWrapperFactory(packet());
  sakUseSetWrapperFactory(packet());
  distSakSetWrapperFactory(packet());
  Vesk::TraceHandle::streamLevelsIs("Macsec", 0);
  EXPECT_EQ(world.texts,
            (std::vector<std::string>{"Macsec void Macsec::EapolWrapper::handlePkt()",
                                      "Macsec void Macsec::BasicParameterSetWrapper::handlePkt()",
                                      "Macsec void Macsec::PeerInfoParameterWrapper::handlePkt()",
                                      "Macsec void Macsec::PeerListSetWrapper::handlePkt()",
                                      "Macsec void Macsec::SakUseSetWrapper::handlePkt()",
                                      "Macsec void Macsec::DistSakSetWrapper::handlePkt()"}));
}

TEST(MkaPduWrappers, PointAtTheCurrentPositionAndChangeNothing) {
  std::vector<uint8_t> const bytes(64, 0x5a);
  auto const pkt = Vesk::make<Lumo::Pkt>(std::span(bytes));
  pkt->positionIs(kPosition);
  auto const wrapper = sakUseSetWrapperFactory(pkt);
  EXPECT_EQ(static_cast<void*>(wrapper->sakUseSetPkt()), pkt->bytes().data() + kPosition);
  EXPECT_EQ(wrapper->pkt(), pkt);
  EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), pkt->bytes().begin()));
}

TEST(MkaPduWrappers, StayWhereTheyAreUntilTheyAreHandledThePacketAgain) {
  auto const pkt = packet();
  auto const wrapper = peerListSetWrapperFactory(pkt);
  pkt->positionIs(10);
  EXPECT_EQ(static_cast<void*>(wrapper->peerListSetPkt()), pkt->bytes().data() + kPosition);
  wrapper->handlePkt();
  EXPECT_EQ(static_cast<void*>(wrapper->peerListSetPkt()), pkt->bytes().data() + 10);
}

TEST(MkaPduWrappers, AreBuiltWithTheirNotificationOn) {
  auto const packet = Vesk::make<Lumo::Pkt>(size_t{200});
  EXPECT_TRUE(eapolWrapperFactory(packet)->hasNotificationActive());
  EXPECT_TRUE(basicParameterSetWrapperFactory(packet)->hasNotificationActive());
  EXPECT_TRUE(peerInfoParameterWrapperFactory(packet)->hasNotificationActive());
  EXPECT_TRUE(peerListSetWrapperFactory(packet)->hasNotificationActive());
  EXPECT_TRUE(sakUseSetWrapperFactory(packet)->hasNotificationActive());
  EXPECT_TRUE(distSakSetWrapperFactory(packet)->hasNotificationActive());
}

TEST(MkaPduWrappersDeathTest, AnOverlayBeyondTheEndOfItsPacketIsABrokenInvariant) {
  auto const pkt = Vesk::make<Lumo::Pkt>(sizeof(SakUseSet) - 1);
  EXPECT_DEATH(sakUseSetWrapperFactory(pkt), "an overlay lies within its packet");
}

TEST(EapolWrapper, ForwardsToItsOverlay) {
  auto const pkt = packet();
  auto const wrapper = eapolWrapperFactory(pkt);
  wrapper->dstIs(Lumo::EthAddr({1, 2, 3, 4, 5, 6}));
  wrapper->srcIs(Lumo::EthAddr({7, 8, 9, 10, 11, 12}));
  wrapper->ethTypeIs(0x888E);
  wrapper->versionIs(3);
  wrapper->eapolTypeIs(EapolType::eapMka);
  wrapper->bodyLenIs(0x0102);
  EXPECT_EQ(octets(pkt, 18),
            "010203040506"
            "0708090a0b0c"
            "888e"
            "03"
            "05"
            "0102");
  EXPECT_EQ(wrapper->dst(), Lumo::EthAddr({1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(wrapper->src(), Lumo::EthAddr({7, 8, 9, 10, 11, 12}));
  EXPECT_EQ(wrapper->ethType(), 0x888E);
  EXPECT_EQ(wrapper->version(), 3);
  EXPECT_EQ(wrapper->eapolType(), 5);
  EXPECT_EQ(wrapper->bodyLen(), 0x0102);
}

TEST(BasicParameterSetWrapper, ForwardsToItsOverlay) {
  auto const pkt = packet();
  auto const wrapper = basicParameterSetWrapperFactory(pkt);
  wrapper->versionIs(1);
  wrapper->keyServerPriorityIs(16);
  wrapper->keyServerIs(1);
  wrapper->macsecDesiredIs(1);
  wrapper->macsecCapabilityIs(2);
  wrapper->parameterSetBodyLengthIs(60);
  wrapper->addrIs(Lumo::EthAddr({2, 0, 0, 0, 0, 1}));
  wrapper->portIdIs(0x0102);
  wrapper->messageNumberIs(9);
  wrapper->algorithmAgilityIs(0x0080C201);
  EXPECT_EQ(octets(pkt, 32),
            "01"
            "10"
            "e03c"
            "0200000000010102" +
                std::string(24, '0') +
                "00000009"
                "0080c201");
  EXPECT_EQ(wrapper->version(), 1);
  EXPECT_EQ(wrapper->keyServerPriority(), 16);
  EXPECT_EQ(wrapper->keyServer(), 1);
  EXPECT_EQ(wrapper->macsecDesired(), 1);
  EXPECT_EQ(wrapper->macsecCapability(), 2);
  EXPECT_EQ(wrapper->parameterSetBodyLength(), 60);
  EXPECT_EQ(wrapper->addr(), Lumo::EthAddr({2, 0, 0, 0, 0, 1}));
  EXPECT_EQ(wrapper->portId().value(), 0x0102);
  EXPECT_EQ(wrapper->messageNumber().value(), 9u);
  EXPECT_EQ(wrapper->algorithmAgility().value(), 0x0080C201u);
}

TEST(PeerListSetWrapper, ForwardsToItsOverlay) {
  auto const pkt = packet();
  auto const wrapper = peerListSetWrapperFactory(pkt);
  wrapper->parameterSetTypeIs(2);
  wrapper->reservedIs(0xab);
  wrapper->parameterSetBodyLengthIs(32);
  EXPECT_EQ(octets(pkt, 4),
            "02"
            "ab"
            "0020");
  EXPECT_EQ(wrapper->parameterSetType(), 2);
  EXPECT_EQ(wrapper->reserved(), 0xab);
  EXPECT_EQ(wrapper->parameterSetBodyLength(), 32);
}

TEST(PeerInfoParameterWrapper, ForwardsToItsOverlay) {
  auto const pkt = packet();
  auto const wrapper = peerInfoParameterWrapperFactory(pkt);
  wrapper->messageNumberIs(0x01020304);
  EXPECT_EQ(octets(pkt, 16), std::string(24, '0') + "01020304");
  EXPECT_EQ(wrapper->messageNumber().value(), 0x01020304u);
}

TEST(SakUseSetWrapper, ForwardsToItsOverlay) {
  auto const pkt = packet();
  auto const wrapper = sakUseSetWrapperFactory(pkt);
  wrapper->latestKeyANIs(2);
  wrapper->latestKeyTxIs(1);
  wrapper->latestKeyRxIs(1);
  wrapper->oldKeyANIs(1);
  wrapper->oldKeyTxIs(1);
  wrapper->oldKeyRxIs(0);
  wrapper->plainTxIs(1);
  wrapper->plainRxIs(0);
  wrapper->delayProtectIs(1);
  wrapper->parameterSetBodyLengthIs(40);
  wrapper->latestKeyNumberIs(2);
  wrapper->llpnIs(3);
  wrapper->oldKeyNumberIs(4);
  wrapper->olpnIs(5);
  EXPECT_EQ(octets(pkt, 44),
            "00"
            "b6"
            "9028" +
                std::string(24, '0') +
                "00000002"
                "00000003" +
                std::string(24, '0') +
                "00000004"
                "00000005");
  EXPECT_EQ(wrapper->latestKeyAN(), 2);
  EXPECT_EQ(wrapper->latestKeyTx(), 1);
  EXPECT_EQ(wrapper->latestKeyRx(), 1);
  EXPECT_EQ(wrapper->oldKeyAN(), 1);
  EXPECT_EQ(wrapper->oldKeyTx(), 1);
  EXPECT_EQ(wrapper->oldKeyRx(), 0);
  EXPECT_EQ(wrapper->plainTx(), 1);
  EXPECT_EQ(wrapper->plainRx(), 0);
  EXPECT_EQ(wrapper->delayProtect(), 1);
  EXPECT_EQ(wrapper->parameterSetBodyLength(), 40);
  EXPECT_EQ(wrapper->latestKeyNumber().value(), 2u);
  EXPECT_EQ(wrapper->llpn().value(), 3u);
  EXPECT_EQ(wrapper->oldKeyNumber().value(), 4u);
  EXPECT_EQ(wrapper->olpn().value(), 5u);
}

TEST(DistSakSetWrapper, ForwardsToItsOverlay) {
  auto const pkt = packet();
  auto const wrapper = distSakSetWrapperFactory(pkt);
  wrapper->parameterSetTypeIs(4);
  wrapper->distributedANIs(3);
  wrapper->confidentialityOffsetIs(1);
  wrapper->parameterSetBodyLengthIs(36);
  wrapper->keyNumberIs(7);
  wrapper->cipherSuiteIs(0x0080C20001000004);
  EXPECT_EQ(octets(pkt, 16),
            "04"
            "d0"
            "0024"
            "00000007"
            "0080c20001000004");
  EXPECT_EQ(wrapper->parameterSetType(), 4);
  EXPECT_EQ(wrapper->distributedAN(), 3);
  EXPECT_EQ(wrapper->confidentialityOffset(), 1);
  EXPECT_EQ(wrapper->parameterSetBodyLength(), 36);
  EXPECT_EQ(wrapper->keyNumber().value(), 7u);
  EXPECT_EQ(wrapper->cipherSuite().value(), 0x0080C20001000004u);
}

}  // namespace
}  // namespace Macsec
