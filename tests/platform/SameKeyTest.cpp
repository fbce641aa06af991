#include "platform/SameKey.h"

#include <gtest/gtest.h>

#include <array>

#include "platform/WardcodeLib.h"
#include "tests/platform/CountingWorld.h"

namespace Macsec {
namespace {

using WardcodeLib::doEncodeKey;

constexpr char kKey[] = "0123456789abcdef0123456789abcdef";
constexpr char kOther[] = "0123456789abcdef0123456789abcdee";

class SameKey : public testing::Test {
 protected:
  SameKey() {
    WardcodeLib::decodeFailuresDel();
    WardcodeLib::hostKeyIs(hostKey_);
  }
  ~SameKey() override { WardcodeLib::hostKeyDel(); }

  void takeAnotherHostKey() {
    ++hostKey_[0];
    WardcodeLib::hostKeyIs(hostKey_);
  }

 private:
  std::array<uint8_t, WardcodeLib::kHostKeySize> hostKey_{1};
  Vesk::CountingWorld world_;
  Vesk::WorldScope scope_{world_};
};

TEST_F(SameKey, IsToldByTheClearTextWhateverTheEncoding) {
  EXPECT_TRUE(isSameKey(doEncodeKey(kKey), doEncodeKey(kKey)));
  EXPECT_FALSE(isSameKey(doEncodeKey(kKey), doEncodeKey(kOther)));
  EXPECT_FALSE(isSameKey(doEncodeKey(kKey), doEncodeKey(std::string(kKey) + kKey)));
  EXPECT_EQ(WardcodeLib::decodeFailures(), 0u);
}

TEST_F(SameKey, TellsNoKeyFromAnyKey) {
  EXPECT_TRUE(isSameKey("", ""));
  EXPECT_FALSE(isSameKey("", doEncodeKey(kKey)));
  EXPECT_FALSE(isSameKey(doEncodeKey(kKey), ""));
}

TEST_F(SameKey, OfATextThatDoesNotDecodeIsItsOwnOctetsAlone) {
  Vesk::String8 const lost = doEncodeKey(kKey), another = doEncodeKey(kKey);
  takeAnotherHostKey();
  EXPECT_TRUE(isSameKey(lost, Vesk::String8(lost.charPtr())));
  EXPECT_FALSE(isSameKey(lost, another));
  EXPECT_FALSE(isSameKey(lost, "") || isSameKey("", lost));
  EXPECT_FALSE(isSameKey(lost, doEncodeKey(kKey)) || isSameKey(doEncodeKey(kKey), lost));
  EXPECT_GT(WardcodeLib::decodeFailures(), 0u);
}

}  // namespace
}  // namespace Macsec
