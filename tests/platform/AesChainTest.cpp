#include "platform/AesChain.h"

#include <gtest/gtest.h>

#include "tests/platform/OctetText.h"

namespace Macsec {
namespace {

constexpr char kKey[] = "2b7e151628aed2a6abf7158809cf4f3c";
// NIST SP 800-38A, F.2.1: the first two blocks, the first with the IV added to it.
constexpr char kClear[] = "6bc0bce12a459991e134741a7f9e1925ae2d8a571e03ac9c9eb76fac45af8e51";
constexpr char kEncrypted[] = "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2";

TEST(AesChain, StartsFromZerosWhateverItHasEncrypted) {
  AesChain chain(octetsOf(kKey));
  for (int i = 0; i < 3; ++i) {
    auto blocks = octetsOf(kClear);
    ASSERT_TRUE(chain.start(blocks));
    EXPECT_EQ(hexString(blocks), kEncrypted) << i;
  }
}

TEST(AesChain, GoesOnFromItsLastBlock) {
  AesChain chain(octetsOf(kKey));
  for (int i = 0; i < 3; ++i) {
    auto blocks = octetsOf(kClear);
    ASSERT_TRUE(chain.start(std::span(blocks).first(16)));
    ASSERT_TRUE(chain.goOn(std::span(blocks).last(16)));
    EXPECT_EQ(hexString(blocks), kEncrypted) << i;
  }
}

TEST(AesChain, StartsNothingWithoutAKeyOfAnAesLength) {
  for (size_t size : {0u, 15u, 24u, 33u}) {
    AesChain chain{std::vector<uint8_t>(size)};
    auto blocks = octetsOf(kClear);
    EXPECT_FALSE(chain.keyed()) << size;
    EXPECT_FALSE(chain.start(blocks)) << size;
  }
}

}  // namespace
}  // namespace Macsec
