#include "model/MemberIdentifier.h"

#include <gtest/gtest.h>

namespace Macsec {
namespace {

TEST(MemberIdentifier, HasATextOf24LowerCaseDigitsThatParsesBack) {
  auto const identifier = MemberIdentifier::parsed("A1a2a3a4a5a6a7a8a9aaabac");
  ASSERT_TRUE(identifier);
  EXPECT_EQ(identifier->bytes()[0], 0xa1);
  EXPECT_EQ(identifier->bytes()[11], 0xac);
  EXPECT_EQ(identifier->stringValue(), "a1a2a3a4a5a6a7a8a9aaabac");
}

TEST(MemberIdentifier, OfTwelveZeroOctetsIsTheEmptyTextAndBack) {
  EXPECT_TRUE(MemberIdentifier().stringValue().empty());
  EXPECT_EQ(MemberIdentifier::parsed(""), MemberIdentifier());
  EXPECT_EQ(MemberIdentifier::parsed("000000000000000000000000"), MemberIdentifier());
}

TEST(MemberIdentifier, IsNotMadeOfAnyOtherText) {
  for (char const* text : {"a1", "a1a2a3a4a5a6a7a8a9aaaba", "a1a2a3a4a5a6a7a8a9aaabacad",
                           "g1a2a3a4a5a6a7a8a9aaabac"}) {
    EXPECT_FALSE(MemberIdentifier::parsed(text)) << text;
  }
}

}  // namespace
}  // namespace Macsec
