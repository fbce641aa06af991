#include "platform/AesGcm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/Hex.h"

namespace Macsec {
namespace {

std::vector<uint8_t> octets(std::string_view hex) {
  std::vector<uint8_t> out(hex.size() / 2);
  EXPECT_TRUE(hexDecode(hex, out));
  return out;
}

AesGcm::Iv iv() {
  AesGcm::Iv iv;
  std::ranges::copy(octets("cafebabefacedbaddecaf888"), iv.begin());
  return iv;
}

// The fourth test case of the paper that proposed GCM.
struct AnAesGcm : ::testing::Test {
  AesGcm key{octets("feffe9928665731c6d6a8f9467308308")};
  std::vector<uint8_t> const clear = octets("feedfacedeadbeeffeedfacedeadbeefabaddad2");
  std::vector<uint8_t> const text = octets(
      "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
      "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b39");
  std::vector<uint8_t> const secret = octets(
      "42831ec2217774244b7221b784d0d49ce3aa212f2c02a4e035c17e2329aca12e"
      "21d514b25466931c7d8f6a5aac84aa051ba30b396a0aac973d58e091");
  std::vector<uint8_t> icv = octets("5bc94fbc3221a5db94fae95ae7121a47");
  std::span<uint8_t, AesGcm::kIcvSize> icvSpan() { return std::span(icv).first<16>(); }
};

TEST_F(AnAesGcm, SealsAsPublished) {
  std::vector<uint8_t> sealed = text;
  std::array<uint8_t, AesGcm::kIcvSize> made;
  ASSERT_TRUE(key.seal(iv(), clear, sealed, made));
  EXPECT_EQ(sealed, secret);
  EXPECT_TRUE(std::ranges::equal(made, icv));
}

TEST_F(AnAesGcm, OpensAsOftenAsItIsAsked) {
  for (int i = 0; i < 2; ++i) {
    std::vector<uint8_t> opened = secret;
    ASSERT_TRUE(key.open(iv(), clear, opened, icvSpan()));
    EXPECT_EQ(opened, text);
  }
}

TEST_F(AnAesGcm, OpensNothingThatDiffersInABit) {
  std::vector<uint8_t> opened = secret;
  opened[7] ^= 1;
  EXPECT_FALSE(key.open(iv(), clear, opened, icvSpan()));
  EXPECT_EQ(opened, std::vector<uint8_t>(secret.size())) << "nothing is left of it";
  opened = secret;
  icv[15] ^= 1;
  EXPECT_FALSE(key.open(iv(), clear, opened, icvSpan()));
}

TEST(AnAesGcmWithAKeyOfAnotherSize, DoesNothing) {
  std::vector<uint8_t> const short15(15), none;
  std::vector<uint8_t> text(3);
  std::array<uint8_t, AesGcm::kIcvSize> icv{};
  for (auto const& size : {short15, none}) {
    AesGcm key(size);
    EXPECT_FALSE(key.keyed());
    EXPECT_FALSE(key.seal(iv(), {}, text, icv));
    EXPECT_FALSE(key.open(iv(), {}, text, icv));
  }
}

}  // namespace
}  // namespace Macsec
