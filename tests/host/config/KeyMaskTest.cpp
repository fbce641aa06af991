#include "host/config/KeyMask.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Macsecd {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string const key = "00112233445566778899aabbccddeeff";

TEST(KeyMask, AKeyIsMaskedOctetForOctetInWhateverFormAndPlace) {
  for (std::string const& word :
       {key, key + key, key.substr(1), key.substr(0, 12), "0x" + key, key.substr(0, 31) + "O",
        std::string("00:11:22:33:44:55:66:77:88:99:aa:bb:cc:dd:ee:ff"),
        std::string("0011 2233 4455 6677 8899 AABB CCDD EEFF"),
        std::string("0011-2233-4455-6677-8899-aabb-ccdd-eeff")}) {
    for (std::string const before : {"cak: ", "{cak: ", "cak: \"", "'", "# ", "cak: &k ", ""}) {
      std::string const text = before + word + "\nfips: true\n";
      KeyMask const mask(text);
      ASSERT_EQ(mask.masked().size(), text.size());
      EXPECT_EQ(mask.masked().substr(0, before.size()), before);
      std::string const masked = mask.masked().substr(before.size(), word.size());
      EXPECT_TRUE(mask.hides(masked)) << text;
      EXPECT_EQ(masked.find_first_of("0123456789abcdefABCDEF"), std::string::npos) << text;
      EXPECT_EQ(mask.clear(masked).view(), word);
      EXPECT_THAT(mask.masked(), HasSubstr("\nfips: true\n"));
    }
  }
}

TEST(KeyMask, WhatIsNoKeyStaysAsItIs) {
  for (std::string const text :
       {"profiles: {uplink: {key: {ckn: c0de0001}}}\n", "interfaces: {Ethernet1: {}}\n",
        "cipher-suite: gcm-aes-xpn-256 # a decade\n", "--- \n... \n- a\n", ""}) {
    KeyMask const mask(text);
    EXPECT_EQ(mask.masked(), text);
    EXPECT_EQ(mask.clear(text).view(), text);
  }
}

TEST(KeyMask, EqualWordsHaveEqualMasksAndOthersOthers) {
  std::string const text = key + "\n" + key + "\n" + key.substr(0, 30) + "00\n";
  KeyMask const mask(text);
  std::string const& masked = mask.masked();
  EXPECT_EQ(masked.substr(0, 32), masked.substr(33, 32));
  EXPECT_NE(masked.substr(0, 32), masked.substr(66, 32));
}

TEST(KeyMask, PiecesThatWereJoinedAreAllClearAgain) {
  std::string const text = "\"" + key + "\\\n" + key + "x\"";
  KeyMask const mask(text);
  std::string const joined = mask.masked().substr(1, 32) + mask.masked().substr(35, 33);
  EXPECT_EQ(mask.clear(joined).view(), key + key + "x");
  EXPECT_TRUE(mask.hides(joined));
  EXPECT_FALSE(mask.hides(joined + "x"));
  EXPECT_FALSE(mask.hides(joined.substr(0, 40))) << "a mask that isn't whole";
}

TEST(KeyMask, AnEscapeIsNoPartOfAWord) {
  for (std::string const escape : {"\\n", "\\x41", "\\u0041", "\\U00000041"}) {
    std::string const text = "\"" + escape + key + "\"";
    KeyMask const mask(text);
    EXPECT_EQ(mask.masked().substr(1, escape.size()), escape);
    EXPECT_TRUE(mask.hides(mask.masked().substr(1 + escape.size(), key.size())));
  }
  EXPECT_EQ(KeyMask("\\").masked(), "\\");
  EXPECT_EQ(KeyMask("\\x4").masked(), "\\x4");
}

TEST(KeyMask, ManyWordsHaveMasksOfTheirOwn) {
  std::string text;
  for (int at = 0; at < 5000; ++at) text += std::to_string(100000000000 + at) + "\n";
  KeyMask const mask(text);
  EXPECT_THAT(mask.masked(), Not(HasSubstr("1")));
  EXPECT_EQ(mask.clear(mask.masked()).view(), text);
}

}  // namespace
}  // namespace Macsecd
