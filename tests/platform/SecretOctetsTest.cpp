#include "platform/SecretOctets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace Macsec {
namespace {

TEST(SecretOctets, TakesTheOctetsOfAHexadecimalText) {
  SecretOctets<4> octets;
  EXPECT_TRUE(octets.hexIs("01ff"));
  EXPECT_EQ(hexString(octets.octets()), "01ff");
}

TEST(SecretOctets, IsEmptyAfterATextThatIsTooLongOrNotHexadecimal) {
  SecretOctets<4> octets;
  for (char const* text : {"0102030405", "01020304f", "010", "0x01"}) {
    EXPECT_FALSE(octets.hexIs(text)) << text;
    EXPECT_EQ(octets.size(), 0u) << text;
  }
}

alignas(SecretOctets<4>) uint8_t volatile place[sizeof(SecretOctets<4>)];

long octetsInPlace(uint8_t value) { return std::count(std::begin(place), std::end(place), value); }

TEST(SecretOctets, AreWipedWhenTheyGo) {
  auto* const octets =
      std::construct_at(reinterpret_cast<SecretOctets<4>*>(const_cast<uint8_t*>(place)));
  ASSERT_TRUE(octets->hexIs("a5a5a5a5"));
  ASSERT_EQ(octetsInPlace(0xa5), 4);
  std::destroy_at(octets);
  EXPECT_EQ(octetsInPlace(0xa5), 0);
}

TEST(SecretOctets, MoveAndLeaveNothingBehind) {
  SecretOctets<4> first;
  ASSERT_TRUE(first.hexIs("01ff"));
  SecretOctets<4> second = std::move(first);
  EXPECT_EQ(hexString(second.octets()), "01ff");
  first.sizeIs(4);
  EXPECT_EQ(hexString(first.octets()), "00000000");
  second = SecretOctets<4>();
  EXPECT_EQ(second.size(), 0u);
}

TEST(SecretOctets, CompareEqualOnlyWithTheSameSizeAndContent) {
  uint8_t const a[] = {1, 2, 3};
  uint8_t const b[] = {1, 2, 4};
  EXPECT_TRUE(equalInConstantTime(a, a));
  EXPECT_FALSE(equalInConstantTime(a, b));
  EXPECT_FALSE(equalInConstantTime(a, std::span(a).first(2)));
}

}  // namespace
}  // namespace Macsec
