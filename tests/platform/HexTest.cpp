#include "platform/Hex.h"

#include <gtest/gtest.h>

#include <array>

namespace Macsec {
namespace {

TEST(Hex, BytesBecomeTwoLowerCaseDigitsEach) {
  unsigned char bytes[] = {0x00, 0x09, 0xab, 0xFF};
  Vesk::String8 text("left over");
  convertByteArrayToHexString(bytes, 4, text);
  EXPECT_EQ(text, "0009abff");
  convertByteArrayToHexString(bytes, 1, text);
  EXPECT_EQ(text, "00");
}

TEST(Hex, NoBytesBecomeTheEmptyText) {
  unsigned char byte = 1;
  Vesk::String8 text("left over");
  convertByteArrayToHexString(&byte, 0, text);
  EXPECT_TRUE(text.empty());
  text = "left over";
  convertByteArrayToHexString(&byte, -1, text);
  EXPECT_TRUE(text.empty());
}

TEST(Hex, DecodingTakesBothCasesAndUndoesEncoding) {
  std::array<uint8_t, 3> octets{};
  EXPECT_TRUE(hexDecode("0aBcFf", octets));
  EXPECT_EQ(octets, (std::array<uint8_t, 3>{0x0a, 0xbc, 0xff}));
  EXPECT_EQ(hexString(octets), "0abcff");
  EXPECT_EQ(secretHexString(octets), "0abcff");
}

TEST(Hex, DecodingRefusesOtherTextsAndLeavesZeros) {
  for (char const* text : {"", "0a", "0a0b0c0d", "0a0b0", "0a0b0g", "0a 0b0", "0a0b:c"}) {
    std::array<uint8_t, 3> octets{1, 2, 3};
    EXPECT_FALSE(hexDecode(text, octets)) << text;
    EXPECT_EQ(octets, (std::array<uint8_t, 3>{})) << text;
  }
}

TEST(Hex, TheEmptyTextStandsForNoOctets) {
  EXPECT_TRUE(hexDecode("", {}));
  EXPECT_TRUE(isHexOctets(""));
  EXPECT_FALSE(isHexOctets("abc"));
}

}  // namespace
}  // namespace Macsec
