#include "platform/CknOctets.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/Hex.h"

namespace Macsec {
namespace {

std::string octetsAsHex(std::string_view text) {
  return hexString(CknOctets(text).octets()).charPtr();
}

TEST(CknOctets, AnEvenNumberOfHexadecimalDigitsGoesAsTheOctetsThatTheySpell) {
  EXPECT_EQ(octetsAsHex("0aFF"), "0aff");
  EXPECT_EQ(octetsAsHex(std::string(64, 'a')), std::string(64, 'a'));
}

TEST(CknOctets, AnyOtherTextGoesAsItsCharacters) {
  EXPECT_EQ(octetsAsHex("abc"), "616263");
  EXPECT_EQ(octetsAsHex("name"), "6e616d65");
  EXPECT_EQ(octetsAsHex("0a:b"), "30613a62");
}

TEST(CknOctets, OfALongTextThirtyTwoCharactersCount) {
  std::string first;
  for (int i = 0; i < 32; ++i) first += "61";
  EXPECT_EQ(octetsAsHex(std::string(66, 'a')), first);
  EXPECT_EQ(octetsAsHex(std::string(65, 'a')), first);
  EXPECT_EQ(CknOctets(std::string(33, 'g')).size(), 32u);
}

TEST(CknOctets, TheEmptyTextHasNone) { EXPECT_EQ(CknOctets("").size(), 0u); }

TEST(CknOctets, TheIdentifierIsTheFirstSixteenWithZerosBehind) {
  EXPECT_EQ(hexString(CknOctets("abc").identifier()), "61626300000000000000000000000000");
  EXPECT_EQ(hexString(CknOctets("000102030405060708090a0b0c0d0e0f1011").identifier()),
            "000102030405060708090a0b0c0d0e0f");
}

}  // namespace
}  // namespace Macsec
