#include "model/MacsecConstants.h"

#include <gtest/gtest.h>

#include "model/MkaPdu.h"

namespace Macsec {
namespace {

using C = MacsecConstants;
using T = ParameterSetTypes;

TEST(MacsecConstants, AreThoseOfTheFormat) {
  EXPECT_EQ(C::eapolVersion, 3);
  EXPECT_EQ(C::eapolMinSize, 18u);
  EXPECT_EQ(C::eapolEthType, 0x888E);
  EXPECT_EQ(C::mkaVersion, 1);
  EXPECT_EQ(C::macsecDesired, true);
  EXPECT_EQ(C::macsecWithoutConfidentiality, 1);
  EXPECT_EQ(C::macsecWithConfidentiality, 2);
  EXPECT_EQ(C::mkpduMinSize, 32u);
  EXPECT_EQ(C::sizeOfMemberIdentifier, 12u);
  EXPECT_EQ(C::sizeOfIcv, 16);
  EXPECT_EQ(C::parameterSetHeaderSize, 4);
  EXPECT_EQ(C::sizeOfPeerInfo, 16);
  EXPECT_EQ(C::basicParameterSetBodyLen, 28);
  EXPECT_EQ(C::mkaAlgorithmAgility, 0x0080C201u);
  EXPECT_EQ(C::mkaAlgorithmAgilityIcvLength, 16);
  EXPECT_EQ(C::mkaWordAlignment, 4);
}

TEST(MacsecConstants, OfTheKeySetsAreThoseOfTheFormat) {
  EXPECT_EQ(C::sakUseParameterSetBodyLen, 40);
  EXPECT_EQ(C::distSakParameterSet128BitKeyBodyLen, 36);
  EXPECT_EQ(C::distSakParameterSet256BitKeyBodyLen, 52);
  EXPECT_EQ(C::distSakBodyLenWithoutCipherSuiteInfo, 28);
  EXPECT_EQ(C::distSakParameterSetLenWithoutKey, 16);
  EXPECT_EQ(C::distCakParameterSetMinimumBodyLen, 24);
  EXPECT_EQ(C::distCakParameterSet128BitKeyMaxBodyLen, 56u);
  EXPECT_EQ(C::distCakParameterSet256BitKeyMaxBodyLen, 104u);
  EXPECT_EQ(C::sizeOfCipherSuiteParam, 8);
  EXPECT_EQ(C::xpn128CipherSuiteRefNo, 0x0080C20001000003u);
  EXPECT_EQ(C::xpn256CipherSuiteRefNo, 0x0080C20001000004u);
  EXPECT_EQ(C::nullCipherSuiteRefNo, 0xFFFFFFFFFFFFFFFFu);
  EXPECT_EQ(C::sizeOfWrapped128BitKey, 24);
  EXPECT_EQ(C::sizeOfWrapped256BitKey, 40);
  EXPECT_EQ(C::icvIndicatorParamSetBodyLen, 4);
}

TEST(MacsecConstants, AgreeWithTheOverlays) {
  EXPECT_EQ(sizeof(Eapol), C::eapolMinSize);
  EXPECT_EQ(sizeof(BasicParameterSet), C::mkpduMinSize);
  EXPECT_EQ(sizeof(BasicParameterSet) - C::parameterSetHeaderSize, C::basicParameterSetBodyLen);
  EXPECT_EQ(sizeof(PeerInfoParameter), C::sizeOfPeerInfo);
  EXPECT_EQ(sizeof(MemberIdentifier), C::sizeOfMemberIdentifier);
  EXPECT_EQ(sizeof(SakUseSet) - C::parameterSetHeaderSize, C::sakUseParameterSetBodyLen);
  EXPECT_EQ(sizeof(DistSakSet), C::distSakParameterSetLenWithoutKey);
}

TEST(ParameterSetTypes, AreThoseOfTheFormat) {
  EXPECT_EQ(T::livePeerParameterSetType, 1);
  EXPECT_EQ(T::potentialPeerParameterSetType, 2);
  EXPECT_EQ(T::sakUseParameterSetType, 3);
  EXPECT_EQ(T::distSakParameterSetType, 4);
  EXPECT_EQ(T::distCakParameterSetType, 5);
  EXPECT_EQ(T::icvIndicatorParameterSetType, 255);
}

}  // namespace
}  // namespace Macsec
