#include <numeric>

#include "platform/Hex.h"
#include "platform/KeyDerivation.h"
#include "tests/config/ConfigFixture.h"

namespace Macsec {
namespace {

using ::testing::ElementsAre;

Lumo::EthAddr const kLow({2, 0, 0, 0, 0, 1}), kHigh({2, 0, 0, 0, 0, 0xab});
constexpr char const* kMsk = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20";

class Dot1xKeys : public Configuration {
 protected:
  Dot1xKeys() {
    profile = config->profileIs("one");
    profile->dot1xEnabledIs(true);
    profile->intfIs(kIntf, true);
  }
  Dot1x::EapKey eapKey(char const* msk = kMsk, Lumo::EthAddr const& a = kLow,
                       Lumo::EthAddr const& b = kHigh, uint8_t type = 0) const {
    return Dot1x::EapKey(type, WardcodeLib::doEncodeKey(msk), "1920", a, b);
  }
  static unsigned char const* bytes(std::string const& text) {
    return reinterpret_cast<unsigned char const*>(text.c_str());
  }
  void expectKeyFrom(std::string const& key, int bits) {
    Vesk::String8 cak, ckn;
    deriveCak(bytes(key), bytes("0200000000010200000000ab"), bits, cak);
    deriveCkn(bytes(key), bits, bytes("19200200000000010200000000ab"), 128, ckn);
    EXPECT_EQ(intfStatus()->key().ckn(), ckn);
    EXPECT_EQ(WardcodeLib::doDecodeKey(intfStatus()->key().cak()), cak);
    EXPECT_EQ(cak.size(), static_cast<size_t>(bits / 4));
    EXPECT_EQ(ckn.size(), 32u);
  }
  Vesk::Ptr<Profile> profile;
};

TEST_F(Dot1xKeys, TheStatusIsThereBeforeTheKey) {
  begin();
  ASSERT_TRUE(intfStatus());
  EXPECT_EQ(intfStatus()->key(), Cak());
  EXPECT_EQ(intfStatus()->dot1xType(), 2);
}

TEST_F(Dot1xKeys, AKeyIsDerivedFromTheFirstHalfOfALongMasterKey) {
  begin();
  eapKeys->keyIs(kIntf, eapKey());
  EXPECT_EQ(intfStatus()->dot1xType(), 0);
  expectKeyFrom(std::string(kMsk).substr(0, 32), 128);
}

TEST_F(Dot1xKeys, TheLongSuiteTakes64DigitsAndTheSameLengthOfName) {
  profile->cipherSuiteIs(CipherSuite::gcmAesXpn256);
  begin();
  eapKeys->keyIs(kIntf, eapKey());
  expectKeyFrom(std::string(kMsk).substr(0, 64), 256);
}

TEST_F(Dot1xKeys, AMasterKeyShorterThanTheCutIsTakenWhole) {
  profile->cipherSuiteIs(CipherSuite::gcmAesXpn256);
  begin();
  std::string const half = std::string(kMsk).substr(0, 32);
  eapKeys->keyIs(kIntf, eapKey(half.c_str()));
  expectKeyFrom(half, 256);
}

TEST_F(Dot1xKeys, WhatNoKeyCanBeDerivedFromChangesNothing) {
  begin();
  eapKeys->keyIs(kIntf, eapKey("0102"));
  eapKeys->keyIs(kIntf, eapKey("no digits"));
  Dot1x::EapKey oddSession = eapKey();
  oddSession.sessionIdIs("abc");
  eapKeys->keyIs(kIntf, oddSession);
  EXPECT_EQ(intfStatus()->key(), Cak());
  EXPECT_EQ(intfStatus()->dot1xType(), 2);
  EXPECT_EQ(world.traced(" The 802.1X module's key isn't usable. Key derivation failed."), 3u);
}

TEST_F(Dot1xKeys, TheOrderOfTheAddressesDoesNotMatter) {
  begin();
  eapKeys->keyIs(kIntf, eapKey(kMsk, kHigh, kLow));
  expectKeyFrom(std::string(kMsk).substr(0, 32), 128);
}

TEST_F(Dot1xKeys, AKeyThatStandsAtTheStartIsTaken) {
  eapKeys->keyIs(kIntf, eapKey());
  begin();
  EXPECT_NE(intfStatus()->key(), Cak());
}

TEST_F(Dot1xKeys, TheSameKeyInAnotherEncodingChangesNothing) {
  begin();
  eapKeys->keyIs(kIntf, eapKey());
  auto writes = Vesk::make<IntfWrites>(intfStatus());
  eapKeys->keyIs(kIntf, eapKey());
  EXPECT_EQ(world.traced("ConfigSm::deriveKey("), 2u);
  EXPECT_THAT(writes->order, ElementsAre());
  eapKeys->keyIs(kIntf, eapKey(kMsk, kLow, kHigh, 1));
  EXPECT_THAT(writes->order, ElementsAre("dot1xType"));
  Vesk::retire(writes);
}

TEST_F(Dot1xKeys, EqualAddressesFailAndChangeNotEvenTheType) {
  begin();
  eapKeys->keyIs(kIntf, eapKey(kMsk, kLow, kLow));
  EXPECT_EQ(intfStatus()->key(), Cak());
  EXPECT_EQ(intfStatus()->dot1xType(), 2);
  EXPECT_EQ(world.traced(" Self and peer MAC address are the same. Key derivation failed."), 1u);
}

TEST_F(Dot1xKeys, TheDeletionOfAKeyIsNotFollowed) {
  begin();
  eapKeys->keyIs(kIntf, eapKey());
  Cak const derived = intfStatus()->key();
  eapKeys->keyDel(kIntf);
  EXPECT_EQ(intfStatus()->key(), derived);
  EXPECT_EQ(world.traced(": Ignoring EAP key deletion on Ethernet1"), 2u);
}

TEST_F(Dot1xKeys, AKeyForAnInterfaceWithoutStatusWaitsForIt) {
  begin();
  eapKeys->keyIs(kOther, eapKey());
  EXPECT_EQ(world.traced(": No intfStatus found. Ignoring EAP key status update on Ethernet2"), 1u);
  profile->intfIs(kOther, true);
  EXPECT_NE(status->intfStatus(kOther)->key(), Cak());
}

TEST_F(Dot1xKeys, AKeyForAProfileWithout8021XHasNoEffect) {
  profile->keyIs(Support::key("6162"));
  profile->dot1xEnabledIs(false);
  begin();
  eapKeys->keyIs(kIntf, eapKey());
  EXPECT_EQ(intfStatus()->key(), profile->key());
  EXPECT_EQ(intfStatus()->dot1xType(), 2);
  EXPECT_EQ(
      world.traced(": Profile one is not configured for Dot1x. Ignoring EAP key status update "
                   "on Ethernet1"),
      1u);
}

TEST_F(Dot1xKeys, Turning8021XOnKeepsTheConfiguredKeyUntilADerivedOneComes) {
  profile->keyIs(Support::key("6162"));
  profile->dot1xEnabledIs(false);
  begin();
  profile->dot1xEnabledIs(true);
  EXPECT_EQ(intfStatus()->key(), profile->key());
  EXPECT_EQ(intfStatus()->dot1xType(), 2);
  eapKeys->keyIs(kIntf, eapKey());
  EXPECT_NE(intfStatus()->key(), profile->key());
  profile->dot1xEnabledIs(false);
  EXPECT_EQ(intfStatus()->key(), profile->key());
  EXPECT_EQ(intfStatus()->dot1xType(), 2);
}

TEST_F(Dot1xKeys, ADerivedKeyEndsWithTheLinkAndAConfiguredOneStays) {
  auto link = ethDir->intfStatusIs(kIntf, kLow, 1);
  link->linkStatusIs(Interface::linkUp);
  begin();
  eapKeys->keyIs(kIntf, eapKey());
  link->linkStatusIs(Interface::linkDown);
  EXPECT_EQ(intfStatus()->key(), Cak());
  EXPECT_EQ(intfStatus()->dot1xType(), 0);
  EXPECT_EQ(world.traced(": Deleting Dot1x derived primary key on Ethernet1"), 1u);
  profile->keyIs(Support::key("6162"));
  profile->dot1xEnabledIs(false);
  link->linkStatusIs(Interface::linkUp);
  link->linkStatusIs(Interface::linkDown);
  EXPECT_EQ(intfStatus()->key(), profile->key());
}

TEST_F(Dot1xKeys, AKeyThatIsStillPublishedComesBackAfterALinkLossWithTheNextEditOfItsProfile) {
  auto link = ethDir->intfStatusIs(kIntf, kLow, 1);
  link->linkStatusIs(Interface::linkUp);
  begin();
  eapKeys->keyIs(kIntf, eapKey());
  Cak const derived = intfStatus()->key();
  link->linkStatusIs(Interface::linkDown);
  link->linkStatusIs(Interface::linkUp);
  EXPECT_EQ(intfStatus()->key(), Cak());
  profile->keyServerPriorityIs(7);
  EXPECT_FALSE(keysDiffer(intfStatus()->key(), derived));
}

TEST_F(Dot1xKeys, APublishedTypeOf2IsStoredAsGivenAndThenItsKeySurvivesTheLink) {
  auto link = ethDir->intfStatusIs(kIntf, kLow, 1);
  link->linkStatusIs(Interface::linkUp);
  begin();
  eapKeys->keyIs(kIntf, eapKey(kMsk, kLow, kHigh, 1));
  EXPECT_EQ(intfStatus()->dot1xType(), 1);
  eapKeys->keyIs(kIntf, eapKey(kMsk, kLow, kHigh, 2));
  EXPECT_EQ(intfStatus()->dot1xType(), 2);
  link->linkStatusIs(Interface::linkDown);
  EXPECT_NE(intfStatus()->key(), Cak());
}

TEST_F(Dot1xKeys, ALinkThatGoesBeforeItIsInitializedOrWithoutStatusChangesNothing) {
  auto link = ethDir->intfStatusIs(kOther, kLow, 1);
  begin();
  link->linkStatusIs(Interface::linkDown);
  EXPECT_EQ(world.traced(": Deleting Dot1x derived primary key"), 0u);
  EXPECT_EQ(world.traced(": ConfigSm not initialized. Bailing."), 0u);
}

/// The octets from `first` to `last` as hexadecimal text.
std::string octetsFrom(uint8_t first, uint8_t last) {
  std::vector<uint8_t> octets(static_cast<size_t>(last - first + 1));
  std::iota(octets.begin(), octets.end(), first);
  return hexString(octets).charPtr();
}

TEST_F(Dot1xKeys, TheDerivationGivesItsKnownValues) {
  Dot1x::EapKey const known(1, WardcodeLib::doEncodeKey(octetsFrom(0x40, 0x7f)),
                            Vesk::String8("0d" + octetsFrom(0x80, 0xbf)).charPtr(),
                            Lumo::EthAddr({2, 0, 0, 0, 0, 1}), Lumo::EthAddr({2, 0, 0, 0, 0, 2}));
  begin();
  eapKeys->keyIs(kIntf, known);
  EXPECT_EQ(intfStatus()->key().ckn(), "f2f3494f070909bce38f4c3616ca1724");
  EXPECT_EQ(WardcodeLib::doDecodeKey(intfStatus()->key().cak()),
            "d595492b9b0faadcc045f48ff84d1ded");
}

TEST_F(Dot1xKeys, AnUnknownCipherEndsTheProcess) {
  begin();
  EXPECT_DEATH(sm->deriveKey(CipherSuite::None, eapKey()),
               "Macsec::ConfigSm::deriveKey\\(.*Assertion `0 && \"Unknown cipher\"' failed");
}

TEST_F(Configuration, WithoutAn8021XModuleItRunsAllTheSame) {
  eapKeys = nullptr;
  auto profile = config->profileIs("one");
  profile->dot1xEnabledIs(true);
  profile->intfIs(kIntf, true);
  begin();
  EXPECT_EQ(intfStatus()->key(), Cak());
}

}  // namespace
}  // namespace Macsec
