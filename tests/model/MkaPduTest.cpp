#include "model/MkaPdu.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Hex.h"

namespace Macsec {
namespace {

template <class Overlay>
std::string octetsOf(Overlay const& overlay) {
  return hexString({reinterpret_cast<uint8_t const*>(&overlay), sizeof overlay}).charPtr();
}

MemberIdentifier member(char const* text) { return MemberIdentifier::parsed(text).value(); }

TEST(Eapol, IsConstructedAsItIsSent) {
  EXPECT_EQ(octetsOf(Eapol()),
            "0180c2000003"
            "000000000000"
            "888e"
            "03"
            "00"
            "0000");
}

TEST(Eapol, EveryFieldLiesAtItsOffset) {
  Eapol eapol;
  eapol.dstIs(Lumo::EthAddr({1, 2, 3, 4, 5, 6}));
  eapol.srcIs(Lumo::EthAddr({7, 8, 9, 10, 11, 12}));
  eapol.ethTypeIs(0x1314);
  eapol.versionIs(0x15);
  eapol.eapolTypeIs(0x16);
  eapol.bodyLenIs(0x1718);
  EXPECT_EQ(octetsOf(eapol),
            "010203040506"
            "0708090a0b0c"
            "1314"
            "15"
            "16"
            "1718");
  EXPECT_EQ(eapol.ethType(), 0x1314);
  EXPECT_EQ(eapol.bodyLen(), 0x1718);
  eapol.eapolTypeIs(EapolType(EapolType::eapMka));
  EXPECT_EQ(eapol.eapolType(), EapolType::eapMka);
}

TEST(MkaPdu, AllOverlaysButEapolAreConstructedZero) {
  EXPECT_EQ(octetsOf(BasicParameterSet()), std::string(64, '0'));
  EXPECT_EQ(octetsOf(SciParameterSet()), std::string(16, '0'));
  EXPECT_EQ(octetsOf(PeerListSet()), std::string(8, '0'));
  EXPECT_EQ(octetsOf(PeerInfoParameter()), std::string(32, '0'));
  EXPECT_EQ(octetsOf(SakUseSet()), std::string(88, '0'));
  EXPECT_EQ(octetsOf(DistSakSet()), std::string(32, '0'));
  EXPECT_EQ(octetsOf(DistCakSet()), std::string(8, '0'));
  EXPECT_EQ(octetsOf(IcvIndicatorSet()), std::string(8, '0'));
}

TEST(BasicParameterSet, EveryFieldLiesAtItsOffset) {
  SciParameterSet sci;
  sci.addrIs(Lumo::EthAddr({2, 0, 0, 0, 0, 1}));
  sci.portIdIs(0x0102);
  BasicParameterSet set;
  set.versionIs(1);
  set.keyServerPriorityIs(0x10);
  set.keyServerIs(1);
  set.macsecDesiredIs(1);
  set.macsecCapabilityIs(2);
  set.parameterSetBodyLengthIs(0x3c);
  set.sciIs(sci);
  set.memberIdentifierIs(member("a1a2a3a4a5a6a7a8a9aaabac"));
  set.messageNumberIs(0x11121314);
  set.algorithmAgilityIs(0x0080C201);
  EXPECT_EQ(octetsOf(set),
            "01"
            "10"
            "e03c"
            "0200000000010102"
            "a1a2a3a4a5a6a7a8a9aaabac"
            "11121314"
            "0080c201");
  EXPECT_EQ(set.basicParameterSetPart(), BasicParameterSetPart(0xE03C));
  EXPECT_EQ(set.sci(), sci);
  EXPECT_EQ(set.messageNumber().value(), 0x11121314u);
}

TEST(BasicParameterSet, ReadsItsBitsThroughItsPart) {
  BasicParameterSet set;
  set.basicParameterSetPartIs(BasicParameterSetPart(0xC0FF));
  EXPECT_EQ(set.keyServer(), 1);
  EXPECT_EQ(set.macsecDesired(), 1);
  EXPECT_EQ(set.macsecCapability(), 0);
  EXPECT_EQ(set.parameterSetBodyLength(), 0x0FF);
}

TEST(SciParameterSet, ComparesAddressAndPort) {
  SciParameterSet a;
  SciParameterSet b;
  EXPECT_TRUE(a == b);
  b.portIdIs(1);
  EXPECT_TRUE(a != b);
  a.portIdIs(1);
  a.addrIs(Lumo::EthAddr({2}));
  EXPECT_TRUE(a != b);
}

TEST(PeerListSet, EveryFieldLiesAtItsOffset) {
  PeerListSet set;
  set.parameterSetTypeIs(1);
  set.reservedIs(0xab);
  set.peerListLengthParameterIs(PeerListLengthParameter(0xF000));
  set.parameterSetBodyLengthIs(0x20);
  EXPECT_EQ(octetsOf(set),
            "01"
            "ab"
            "f020");
  EXPECT_EQ(set.reserved(), 0xab);
  EXPECT_EQ(set.parameterSetBodyLength(), 0x20);
}

TEST(PeerInfoParameter, EveryFieldLiesAtItsOffset) {
  PeerInfoParameter peer;
  peer.memberIdentifierIs(member("b1b2b3b4b5b6b7b8b9babbbc"));
  peer.messageNumberIs(7);
  EXPECT_EQ(octetsOf(peer),
            "b1b2b3b4b5b6b7b8b9babbbc"
            "00000007");
  EXPECT_EQ(peer.messageNumber(), Lumo::NetU32(7));
}

TEST(SakUseSet, EveryFieldLiesAtItsOffset) {
  SakUseSet set;
  set.parameterSetTypeIs(3);
  set.latestKeyANIs(2);
  set.latestKeyTxIs(1);
  set.latestKeyRxIs(1);
  set.oldKeyANIs(1);
  set.oldKeyTxIs(1);
  set.oldKeyRxIs(0);
  set.plainRxIs(1);
  set.reservedIs(1);
  set.delayProtectIs(1);
  set.parameterSetBodyLengthIs(40);
  set.latestKeyServerMemberIdentifierIs(member("a1a2a3a4a5a6a7a8a9aaabac"));
  set.latestKeyNumberIs(2);
  set.llpnIs(3);
  set.oldKeyServerMemberIdentifierIs(member("b1b2b3b4b5b6b7b8b9babbbc"));
  set.oldKeyNumberIs(4);
  set.olpnIs(5);
  EXPECT_EQ(octetsOf(set),
            "03"
            "b6"
            "7028"
            "a1a2a3a4a5a6a7a8a9aaabac"
            "00000002"
            "00000003"
            "b1b2b3b4b5b6b7b8b9babbbc"
            "00000004"
            "00000005");
  EXPECT_EQ(set.latestKeyAN(), 2);
  EXPECT_EQ(set.oldKeyTx(), 1);
  EXPECT_EQ(set.plainTx(), 0);
  EXPECT_EQ(set.delayProtect(), 1);
  EXPECT_EQ(set.olpn().value(), 5u);
}

TEST(DistSakSet, EveryFieldLiesAtItsOffset) {
  DistSakSet set;
  set.parameterSetTypeIs(4);
  set.distSakAnAndOffsetIs(DistSakAnAndOffset(0x0F));
  set.distributedANIs(3);
  set.confidentialityOffsetIs(1);
  set.distSakLengthSetIs(DistSakLengthSet(0x8000));
  set.parameterSetBodyLengthIs(36);
  set.keyNumberIs(1);
  set.cipherSuiteIs(0x0080C20001000003);
  EXPECT_EQ(octetsOf(set),
            "04"
            "df"
            "8024"
            "00000001"
            "0080c20001000003");
  EXPECT_EQ(set.distributedAN(), 3);
  EXPECT_EQ(set.cipherSuite().value(), 0x0080C20001000003u);
}

TEST(DistCakSet, EveryFieldLiesAtItsOffset) {
  DistCakSet set;
  set.parameterSetTypeIs(5);
  set.reservedIs(0xcd);
  set.parameterSetBodyLengthIs(0x138);
  EXPECT_EQ(octetsOf(set),
            "05"
            "cd"
            "0138");
  EXPECT_EQ(set.distCakLengthSet(), DistCakLengthSet(0x138));
}

TEST(IcvIndicatorSet, EveryFieldLiesAtItsOffset) {
  IcvIndicatorSet set;
  set.parameterSetTypeIs(255);
  set.reservedIs(0xee);
  set.parameterSetBodyLengthIs(4);
  EXPECT_EQ(octetsOf(set),
            "ff"
            "ee"
            "0004");
  EXPECT_EQ(set.icvIndicatorLengthSet(), IcvIndicatorLengthSet(4));
}

TEST(MkaPdu, AnOverlayLiesOnAnyOctetOfAPacket) {
  std::vector<uint8_t> packet(1 + sizeof(PeerListSet));
  overlayOn<PeerListSet>(packet.data() + 1)->parameterSetBodyLengthIs(16);
  EXPECT_EQ(hexString(packet), "0000000010");
  uint8_t const* const data = packet.data();
  EXPECT_EQ(overlayOn<PeerListSet>(data + 1)->parameterSetBodyLength(), 16);
}

}  // namespace
}  // namespace Macsec
