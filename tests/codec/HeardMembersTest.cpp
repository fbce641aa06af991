#include "codec/HeardMembers.h"

#include <gtest/gtest.h>

namespace Codec {
namespace {

Macsec::MemberIdentifier numbered(uint16_t number) {
  std::array<uint8_t, 12> bytes{0xaa};
  bytes[10] = static_cast<uint8_t>(number >> 8);
  bytes[11] = static_cast<uint8_t>(number);
  return Macsec::MemberIdentifier(bytes);
}

Macsec::CknOctets const kName("c0de0001");
Macsec::CknOctets const kOther("c0de0002");

TEST(HeardMembers, KnowTheNumberThatWasHeardAndAllBeforeIt) {
  HeardMembers heard;
  EXPECT_FALSE(heard.has(kName, numbered(1), 1));
  heard.heard(kName, numbered(1), 7);
  EXPECT_TRUE(heard.has(kName, numbered(1), 6));
  EXPECT_TRUE(heard.has(kName, numbered(1), 7));
  EXPECT_FALSE(heard.has(kName, numbered(1), 8));
}

TEST(HeardMembers, NeverCountBack) {
  HeardMembers heard;
  heard.heard(kName, numbered(1), 7);
  heard.heard(kName, numbered(1), 3);
  EXPECT_TRUE(heard.has(kName, numbered(1), 7));
}

TEST(HeardMembers, OfOneNameAreNotThoseOfAnother) {
  HeardMembers heard;
  heard.heard(kName, numbered(1), 7);
  EXPECT_FALSE(heard.has(kOther, numbered(1), 7));
  EXPECT_FALSE(heard.has(kName, numbered(2), 7));
}

TEST(HeardMembers, ForgetTheOneThatHasBeenSilentForLongestWhenTheyAreTooMany) {
  HeardMembers heard;
  for (uint16_t i = 0; i < HeardMembers::kMostMembers; ++i) heard.heard(kName, numbered(i), 1);
  heard.heard(kName, numbered(0), 2);
  heard.heard(kName, numbered(HeardMembers::kMostMembers), 1);
  EXPECT_TRUE(heard.has(kName, numbered(0), 2));
  EXPECT_FALSE(heard.has(kName, numbered(1), 1));
  EXPECT_TRUE(heard.has(kName, numbered(2), 1));
}

TEST(HeardMembers, KeepWhoIsHeardNowAndThenHoweverManyStrangersComeBetween) {
  HeardMembers heard;
  for (uint16_t i = 0; i < 3; ++i) heard.heard(kName, numbered(i), 7);
  for (uint16_t round = 0; round < 20; ++round) {
    for (uint16_t i = 0; i < HeardMembers::kMostMembers - 4; ++i) {
      heard.heard(kName, numbered(static_cast<uint16_t>(100 + 1024 * round + i)), 1);
    }
    for (uint16_t i = 0; i < 3; ++i) {
      ASSERT_TRUE(heard.has(kName, numbered(i), 7)) << i;
      heard.heard(kName, numbered(i), 7);
    }
  }
}

TEST(HeardMembers, ForgetTheNameThatHasBeenSilentForLongestWhenTheyAreTooMany) {
  HeardMembers heard;
  auto const name = [](size_t i) { return Macsec::CknOctets("aa0" + std::to_string(i)); };
  for (size_t i = 0; i < HeardMembers::kMostNames; ++i) heard.heard(name(i), numbered(1), 1);
  heard.heard(name(0), numbered(1), 2);
  heard.heard(name(HeardMembers::kMostNames), numbered(1), 1);
  EXPECT_TRUE(heard.has(name(0), numbered(1), 1));
  EXPECT_FALSE(heard.has(name(1), numbered(1), 1));
  EXPECT_TRUE(heard.has(name(2), numbered(1), 1));
}

}  // namespace
}  // namespace Codec
