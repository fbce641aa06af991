#include "codec/MemberTexts.h"

#include <gtest/gtest.h>

#include <string>

namespace Codec {
namespace {

using Macsec::MemberIdentifier;

MemberIdentifier identified(uint8_t number) {
  return MemberIdentifier({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, number});
}

TEST(TheTextsOfMembers, AreMadeOnceHoweverOftenAMemberIsMet) {
  MemberTexts texts;
  Vesk::String8 const first = texts.text(identified(1));
  EXPECT_EQ(first, "0102030405060708090a0b01");
  EXPECT_TRUE(texts.text(identified(1)).isCopyOf(first));
}

TEST(TheTextsOfMembers, TellTheMemberByACopyAndByAnEqualText) {
  MemberTexts texts;
  Vesk::String8 const copy = texts.text(identified(1));
  Vesk::String8 const equal(std::string(copy.view()));
  ASSERT_FALSE(equal.isCopyOf(copy));
  EXPECT_EQ(texts.identifier(copy), identified(1));
  EXPECT_EQ(texts.identifier(equal), identified(1));
  EXPECT_TRUE(texts.text(identified(1)).isCopyOf(copy));
}

TEST(TheTextsOfMembers, KnowZerosAsTheEmptyTextAndNothingByAnyOtherText) {
  MemberTexts texts;
  EXPECT_TRUE(texts.text(MemberIdentifier()).empty());
  EXPECT_EQ(texts.identifier(Vesk::String8()), MemberIdentifier());
  EXPECT_FALSE(texts.identifier("no identifier"));
}

TEST(TheTextsOfMembers, OfThoseWhoSettledStayWhileStrangersComeAndGo) {
  MemberTexts texts;
  Vesk::String8 const settled = texts.text(identified(1));
  for (uint8_t stranger = 2; stranger < 200; ++stranger) {
    texts.text(identified(stranger));
    ASSERT_TRUE(texts.text(identified(1)).isCopyOf(settled));
  }
  EXPECT_EQ(texts.text(identified(100)), "0102030405060708090a0b64");
}

}  // namespace
}  // namespace Codec
