#include "platform/WardcodeLib.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "tests/platform/CountingWorld.h"

namespace WardcodeLib {
namespace {

constexpr char kKey[] = "0123456789abcdef0123456789abcdef";

class Wardcode : public testing::Test {
 protected:
  Wardcode() {
    decodeFailuresDel();
    decodeFailureSinkIs([this](std::string_view text) { reports_.emplace_back(text); });
    hostKeyIs(hostKey_);
  }
  ~Wardcode() override {
    decodeFailureSinkIs(nullptr);
    hostKeyDel();
  }

  std::array<uint8_t, kHostKeySize> hostKey_{1, 2, 3};
  Vesk::CountingWorld world_;
  Vesk::WorldScope scope_{world_};
  std::vector<std::string> reports_;
};

TEST_F(Wardcode, WhatIsEncodedDecodesToItself) {
  for (std::string key : {std::string(kKey), std::string(64, 'f'), std::string("0"),
                          std::string("any text"), std::string(300, 'a')}) {
    EXPECT_EQ(doDecodeKey(doEncodeKey(key)), Vesk::String8(key));
  }
  EXPECT_EQ(decodeFailures(), 0u);
  EXPECT_TRUE(reports_.empty());
}

TEST_F(Wardcode, EncodingsOfOneKeyDifferAndShowNothingOfIt) {
  Vesk::String8 const one = doEncodeKey(kKey);
  Vesk::String8 const two = doEncodeKey(kKey);
  EXPECT_NE(one, two);
  EXPECT_TRUE(one.view().starts_with("w1:"));
  EXPECT_EQ(one.length(), 3 + 2 * (12 + 32 + 16));
  EXPECT_EQ(one.view().find("0123456789abcdef"), std::string_view::npos);
  EXPECT_NE(one.view().substr(27, 64), two.view().substr(27, 64)) << "not the nonces alone";
}

TEST_F(Wardcode, NoKeyIsTheEmptyTextInBothForms) {
  EXPECT_TRUE(doEncodeKey("").empty());
  EXPECT_TRUE(doDecodeKey("").empty());
  EXPECT_EQ(decodeFailures(), 0u);
}

TEST_F(Wardcode, AnyChangedCharacterYieldsNoKey) {
  std::string const encoded = doEncodeKey(kKey).charPtr();
  for (size_t i = 0; i < encoded.size(); ++i) {
    std::string changed = encoded;
    changed[i] = changed[i] == '0' ? '1' : '0';
    EXPECT_TRUE(doDecodeKey(changed).empty()) << i;
  }
  EXPECT_EQ(decodeFailures(), encoded.size());
}

TEST_F(Wardcode, TextsThatWereNeverEncodedYieldNoKey) {
  std::string const encoded = doEncodeKey(kKey).charPtr();
  for (std::string text : {std::string(kKey), std::string("w1:"), std::string("w1:00"),
                           "w1:" + std::string(2 * (12 + 16), '0'), encoded + "0", encoded + "00",
                           encoded.substr(0, encoded.size() - 2), "w2:" + encoded.substr(3)}) {
    EXPECT_TRUE(doDecodeKey(text).empty()) << text;
  }
}

TEST_F(Wardcode, AnotherHostKeyYieldsNoKey) {
  Vesk::String8 const encoded = doEncodeKey(kKey);
  hostKeyIs(std::array<uint8_t, kHostKeySize>{9});
  EXPECT_TRUE(doDecodeKey(encoded).empty());
  hostKeyIs(hostKey_);
  EXPECT_EQ(doDecodeKey(encoded), kKey);
}

TEST_F(Wardcode, AFailureIsReportedOnceAndTheReportNamesTheRemedyAndNoKey) {
  std::string damaged = doEncodeKey(kKey).charPtr();
  damaged.back() = damaged.back() == '0' ? '1' : '0';
  for (int i = 0; i < 3; ++i) doDecodeKey(damaged);
  doDecodeKey(kKey);
  ASSERT_EQ(reports_.size(), 1u);
  EXPECT_EQ(decodeFailures(), 4u);
  EXPECT_NE(reports_[0].find("Enter the key again"), std::string::npos);
  EXPECT_EQ(reports_[0].find(damaged.substr(3, 8)), std::string::npos);
  EXPECT_EQ(reports_[0].find("0123"), std::string::npos);
  decodeFailuresDel();
  EXPECT_EQ(decodeFailures(), 0u);
  doDecodeKey(damaged);
  EXPECT_EQ(reports_.size(), 2u);
}

TEST_F(Wardcode, AFailureBeforeAnybodyListensIsReportedToTheFirstWhoDoes) {
  decodeFailureSinkIs(nullptr);
  doDecodeKey(kKey);
  EXPECT_TRUE(reports_.empty());
  decodeFailureSinkIs([this](std::string_view text) { reports_.emplace_back(text); });
  EXPECT_EQ(reports_.size(), 1u);
}

TEST_F(Wardcode, WithoutAHostKeyTheFirstUseMakesOneForTheProcess) {
  hostKeyDel();
  Vesk::String8 const encoded = doEncodeKey(kKey);
  EXPECT_EQ(doDecodeKey(encoded), kKey);
  std::array<uint8_t, kHostKeySize> drawn;
  for (size_t i = 0; i < drawn.size(); ++i) drawn[i] = static_cast<uint8_t>(i);
  hostKeyIs(drawn);
  EXPECT_EQ(doDecodeKey(encoded), kKey) << "it came from the world's random source";
  hostKeyDel();
  EXPECT_TRUE(doDecodeKey(encoded).empty()) << "the next one is another";
}

}  // namespace
}  // namespace WardcodeLib
