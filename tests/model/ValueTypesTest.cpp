#include <gtest/gtest.h>

#include <sstream>

#include "model/Macsec.h"
#include "tests/support/DescribedLayout.h"
#include "tests/support/OtherValue.h"

namespace Macsec::Test {
namespace {

using Vesk::String8;
using Vesk::valueFromStrep;
using Vesk::valueToStrep;
using Vesk::Test::expectEachFieldCounts;
using Vesk::Test::expectEveryFieldDescribed;

Lumo::EthAddr const addr({2, 0, 0, 0, 0, 1});
Sci const sci(addr, 7);
std::string const sciText = "Value('Macsec::Sci', ** {'addr': '02:00:00:00:00:01', 'portNum': 7})";

char const anRangeText[] =
    "AssociationNumber::value < AssociationNumber::min or > AssociationNumber::max not allowed";

/// Prints as `text`, to a stream too, and parses back from it.
template <class T>
void expectPrints(T const& value, std::string const& text) {
  EXPECT_EQ(valueToStrep(value), text);
  std::ostringstream out;
  out << value;
  EXPECT_EQ(out.str(), text);
  EXPECT_TRUE(valueFromStrep<T>(text) == value) << text;
}

template <class F>
void expectRangeError(F f) {
  try {
    f();
    FAIL() << "nothing thrown";
  } catch (Vesk::RangeException const& e) {
    EXPECT_STREQ(e.what(), anRangeText);
  }
}

Sak someSak() {
  Sak sak(AssociationNumber(2));
  sak.keyMsgIdIs("0102030405060708090a0b0c");
  sak.keyNumIs(9);
  sak.keyIs("k'e\\y");
  sak.saltIs("ff");
  return sak;
}
std::string const someSakText =
    "Value('Macsec::Sak', ** {'an': 2, 'keyMsgId': '0102030405060708090a0b0c', 'keyNum': 9, "
    "'key': 'k\\'e\\\\y', 'salt': 'ff'})";

TEST(AssociationNumber, IsFrom0To3) {
  EXPECT_EQ(AssociationNumber().value(), 0);
  EXPECT_EQ(AssociationNumber::min, 0);
  EXPECT_EQ(AssociationNumber::max, 3);
  for (uint8_t n = 0; n <= 3; ++n) {
    EXPECT_EQ(AssociationNumber(n).value(), n);
    EXPECT_EQ(AssociationNumber(n).hash(), n);
    expectPrints(AssociationNumber(n), std::to_string(n));
  }
}

TEST(AssociationNumber, AboveThreeThrowsByArgumentAndAssignment) {
  for (uint64_t n : {uint64_t{4}, uint64_t{255}, uint64_t{256}, UINT64_MAX}) {
    expectRangeError([&] { AssociationNumber an(n); });
    AssociationNumber an(3);
    expectRangeError([&] { an.valueIs(n); });
    EXPECT_EQ(an.value(), 3);
  }
  expectRangeError([] { AssociationNumber an(AssociationNumber(3).value() + 1); });
}

TEST(AssociationNumber, AboveThreeThrowsFromTextAloneAndInsideOthers) {
  for (char const* text :
       {"4", "256", "4294967296", "18446744073709551616", "99999999999999999999"}) {
    expectRangeError([&] { valueFromStrep<AssociationNumber>(text); });
  }
  std::string sak = someSakText;
  sak.replace(sak.find("'an': 2"), 7, "'an': 4");
  expectRangeError([&] { valueFromStrep<Sak>(sak); });
  expectRangeError([] { valueFromStrep<RxLPN>("Value('Macsec::RxLPN', ** {'lpn': 1, 'an': 4})"); });
  EXPECT_THROW(valueFromStrep<AssociationNumber>("-1"), Vesk::ParseException);
  EXPECT_THROW(valueFromStrep<AssociationNumber>("x"), Vesk::ParseException);
}

TEST(AssociationNumber, IsOrdered) {
  AssociationNumber const one(1), two(2);
  EXPECT_TRUE(one < two && one <= two && two > one && two >= one && one <= one && one != two);
  EXPECT_FALSE(two < one || two <= one);
}

TEST(Sak, WithoutMoreThanItsNumberIsTheEmptyKey) {
  Sak const empty(AssociationNumber(0));
  EXPECT_TRUE(empty == Sak(AssociationNumber(0)));
  EXPECT_TRUE(empty == Sak());
  EXPECT_TRUE(empty.keyMsgId().empty() && empty.key().empty() && empty.salt().empty());
  EXPECT_EQ(empty.keyNum(), 0u);
  Sak first = empty;
  first.keyNumIs(1);
  EXPECT_FALSE(first == empty);
  EXPECT_TRUE(first != empty);
}

TEST(Sak, IsToldByItsNumbersAndItsKeyServer) {
  Sak other = someSak();
  other.keyIs("another encoding");
  other.saltIs("");
  EXPECT_TRUE(isSameSak(someSak(), other));
  other.keyNumIs(10);
  EXPECT_FALSE(isSameSak(someSak(), other));
  other = someSak();
  other.anIs(AssociationNumber(1));
  EXPECT_FALSE(isSameSak(someSak(), other));
  other = someSak();
  other.keyMsgIdIs("0102030405060708090a0b0d");
  EXPECT_FALSE(isSameSak(someSak(), other));
}

TEST(SakContext, EmptyOneHasTheEmptyKeyAndNoFlag) {
  SakContext const empty;
  EXPECT_EQ(empty.sak(), Sak(AssociationNumber(0)));
  EXPECT_EQ(empty.lpn(), 0u);
  EXPECT_FALSE(empty.txEnabled() || empty.rxEnabled() || empty.txInstalled() ||
               empty.rxInstalled());
}

TEST(SakContext, OnesThatDifferInRxInstalledAloneAreUnequal) {
  SakContext const a(someSak(), 1, true, true, true, false),
      b(someSak(), 1, true, true, true, true);
  EXPECT_TRUE(a != b);
}

TEST(ValueTypes, HaveTheirDefaults) {
  EXPECT_EQ(Cak(), Cak("", ""));
  EXPECT_EQ(CakDistInfo(), CakDistInfo("", ""));
  EXPECT_FALSE(GroupCak::enabledDefault);
  EXPECT_EQ(GroupCak::lifetimeDefault, 1000u);
  EXPECT_EQ(GroupCak(), GroupCak(false, 1000));
  EXPECT_EQ(KeysLPN(), KeysLPN(0, 0));
  EXPECT_EQ(Sci(), Sci(Lumo::EthAddr(), 0));
  EXPECT_EQ(BasicInfo(), BasicInfo(0, false, false, 0, Sci(), "", 0, ""));
  EXPECT_EQ(KeyInfo(), KeyInfo(0, false, false, "", 0, 0));
  EXPECT_EQ(PlainTextInfo(), PlainTextInfo(false, false, false));
  EXPECT_EQ(SakUseInfo(), SakUseInfo(KeyInfo(), KeyInfo(), PlainTextInfo()));
  EXPECT_EQ(ANOffset(), ANOffset(0, 0));
  EXPECT_EQ(SakDistInfo(), SakDistInfo(ANOffset(), 0, CipherSuite::gcmAesXpn128, ""));
  EXPECT_EQ(IcvIndicatorInfo(), IcvIndicatorInfo(0));
  EXPECT_EQ(Ssci(), Ssci(Sci(), ""));
  EXPECT_EQ(RxLPN(), RxLPN(0, AssociationNumber(0)));
  EXPECT_EQ(FipsStatus(), FipsStatus(false, false));
  EXPECT_FALSE(MacsecParams().includeSci());
}

TEST(ValueTypes, PrintInTheirFormsAndParseBack) {
  expectPrints(Cak("name", "key"), "Value('Macsec::Cak', ** {'ckn': 'name', 'cak': 'key'})");
  expectPrints(CakDistInfo("key", "name"),
               "Value('Macsec::CakDistInfo', ** {'cak': 'key', 'ckn': 'name'})");
  expectPrints(GroupCak(true, 5), "Value('Macsec::GroupCak', ** {'enabled': True, 'lifetime': 5})");
  expectPrints(someSak(), someSakText);
  expectPrints(SakContext(someSak(), 3, true, false, true, false),
               "Value('Macsec::SakContext', ** {'sak': " + someSakText +
                   ", 'lpn': 3, 'txEnabled': True, 'rxEnabled': False, 'txInstalled': True, "
                   "'rxInstalled': False})");
  expectPrints(KeysLPN(1, 2), "Value('Macsec::KeysLPN', ** {'oldKeyLPN': 1, 'latestKeyLPN': 2})");
  expectPrints(sci, sciText);
  expectPrints(IcvIndicatorInfo(16), "16");
  expectPrints(MacsecParams(CipherSuite::gcmAesXpn256, true),
               "Value('Macsec::MacsecParams', ** {'cipher': gcmAesXpn256, 'includeSci': True})");
  expectPrints(Ssci(sci, "00000001"),
               "Value('Macsec::Ssci', ** {'sci': " + sciText + ", 'ssci': '00000001'})");
  expectPrints(RxLPN(4, AssociationNumber(3)), "Value('Macsec::RxLPN', ** {'lpn': 4, 'an': 3})");
  expectPrints(
      FipsStatus(true, false),
      "Value('Macsec::FipsStatus', ** {'fipsRestrictions': True, 'fipsModeSuccess': False})");
}

TEST(ValueTypes, OfTheParameterSetsPrintInTheirFormsAndParseBack) {
  expectPrints(BasicInfo(16, true, false, 2, sci, "ab", 3, "c'n"),
               "Value('Macsec::BasicInfo', ** {'keyServerPriority': 16, 'keyServer': True, "
               "'macsecDesired': False, 'macsecCapability': 2, 'sci': " +
                   sciText + ", 'msgId': 'ab', 'msgNum': 3, 'ckn': 'c\\'n'})");
  KeyInfo const key(3, true, false, "ab", 4, 5);
  std::string const keyText =
      "Value('Macsec::KeyInfo', ** {'keyAN': 3, 'keyTx': True, 'keyRx': False, "
      "'keyServerMsgId': 'ab', 'keyNum': 4, 'keyLLPN': 5})";
  expectPrints(key, keyText);
  PlainTextInfo const plain(true, false, true);
  std::string const plainText =
      "Value('Macsec::PlainTextInfo', ** {'plainTx': True, 'plainRx': False, 'delayProtect': "
      "True})";
  expectPrints(plain, plainText);
  expectPrints(SakUseInfo(KeyInfo(), key, plain),
               "Value('Macsec::SakUseInfo', ** {'oldKeyInfo': " + valueToStrep(KeyInfo()) +
                   ", 'latestKeyInfo': " + keyText + ", 'plainTextInfo': " + plainText + "})");
  std::string const anText = "Value('Macsec::ANOffset', ** {'distAN': 1, 'offset': 2})";
  expectPrints(ANOffset(1, 2), anText);
  expectPrints(SakDistInfo(ANOffset(1, 2), 6, CipherSuite::error, "x"),
               "Value('Macsec::SakDistInfo', ** {'anAndOffset': " + anText +
                   ", 'keyNum': 6, 'cipherSuite': error, 'sak': 'x'})");
}

TEST(IcvIndicatorInfo, TextOverItsRangeIsRefused) {
  EXPECT_EQ(valueFromStrep<IcvIndicatorInfo>("65535").icvLength(), 65535);
  EXPECT_THROW(valueFromStrep<IcvIndicatorInfo>("65536"), Vesk::ParseException);
}

template <class T>
class EveryValueType : public testing::Test {};
using ValueTypes =
    testing::Types<AssociationNumber, Cak, CakDistInfo, GroupCak, Sak, SakContext, KeysLPN, Sci,
                   BasicInfo, KeyInfo, PlainTextInfo, SakUseInfo, ANOffset, SakDistInfo,
                   IcvIndicatorInfo, MacsecParams, Ssci, RxLPN, FipsStatus>;
TYPED_TEST_SUITE(EveryValueType, ValueTypes);

TYPED_TEST(EveryValueType, DescribesItsFieldsInOrderOfDeclaration) {
  expectEveryFieldDescribed<TypeParam>();
}

TYPED_TEST(EveryValueType, ComparesPrintsAndParsesEachField) { expectEachFieldCounts<TypeParam>(); }

TEST(Constants, AreWhatMacsecAddsToAFrame) {
  static_assert(std::is_same_v<decltype(Constants::secHdrSize), uint8_t const>);
  EXPECT_EQ(Constants::secHdrSize, 24);
  EXPECT_EQ(Constants::secHdrSizeWithSci, 32);
}

template <class E>
void expectNamed(E e, uint64_t number, std::string const& name) {
  EXPECT_EQ(static_cast<uint64_t>(e), number);
  EXPECT_EQ(Vesk::enumFromNumber<E>(number), e);
  EXPECT_EQ(Vesk::enumFromName<E>(name), e);
  EXPECT_EQ(stringValue(e), name);
  expectPrints(e, name);
}

TEST(Enumerations, HaveTheirNamesAndNumbers) {
  expectNamed(CipherSuite::gcmAesXpn128, 128, "gcmAesXpn128");
  expectNamed(CipherSuite::gcmAesXpn256, 256, "gcmAesXpn256");
  expectNamed(CipherSuite::None, 0, "None");
  expectNamed(CipherSuite::error, 1, "error");
  expectNamed(MessageCounterDirection::tx, 0, "tx");
  expectNamed(MessageCounterDirection::rx, 1, "rx");
  expectNamed(MessageCounterType::success, 0, "success");
  expectNamed(MessageCounterType::failure, 1, "failure");
  char const* const failures[] = {"none",
                                  "invalid",
                                  "eapolErr",
                                  "basicParamSetErr",
                                  "unrecognizedCkn",
                                  "icvValidationErr",
                                  "livePeerListErr",
                                  "potentialPeerListErr",
                                  "sakUseSetErr",
                                  "distSakSetErr",
                                  "distCakSetErr",
                                  "icvIndicatorErr",
                                  "unrecognizedSetErr"};
  for (uint64_t n = 0; n < 13; ++n) {
    expectNamed(static_cast<MessageCounterFailureSubType>(n), n, failures[n]);
  }
  EXPECT_EQ(MessageCounterFailureSubType::unrecognizedSetErr,
            static_cast<MessageCounterFailureSubType>(12));
}

TEST(Enumerations, RefuseOtherNumbersAndNames) {
  EXPECT_THROW(Vesk::enumFromNumber<CipherSuite>(2), Vesk::RangeException);
  EXPECT_THROW(Vesk::enumFromNumber<MessageCounterFailureSubType>(13), Vesk::RangeException);
  EXPECT_THROW(Vesk::enumFromName<CipherSuite>("none"), Vesk::RangeException);
  EXPECT_THROW(valueFromStrep<CipherSuite>("128"), Vesk::RangeException);
}

}  // namespace
}  // namespace Macsec::Test
