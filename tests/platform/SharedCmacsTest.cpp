#include "platform/SharedCmacs.h"

#include <gtest/gtest.h>

#include "tests/support/TestWorld.h"

namespace Macsec {
namespace {

using Key = std::array<uint8_t, 16>;

class SharedCiphers : public ::testing::Test {
 protected:
  SharedCmacs& ciphers() { return world.kept<SharedCmacs>(); }
  static Key key(uint8_t octet) {
    Key key;
    key.fill(octet);
    return key;
  }
  static std::array<uint8_t, AesCmac::kSize> macOf(AesCmac& cipher, std::span<uint8_t const> text) {
    std::array<uint8_t, AesCmac::kSize> mac;
    EXPECT_TRUE(cipher.compute(text, mac));
    return mac;
  }

  Support::TestWorld world;
  Vesk::WorldScope inWorld{world};
};

TEST_F(SharedCiphers, AreOneForEachKey) {
  size_t const before = ciphers().members();
  auto const one = SharedCmacs::cmac(key(1)), again = SharedCmacs::cmac(key(1));
  auto const other = SharedCmacs::cmac(key(2));
  EXPECT_EQ(one, again);
  EXPECT_NE(one, other);
  EXPECT_EQ(ciphers().members(), before + 2);
}

TEST_F(SharedCiphers, ComputeAsOneOfItsOwnWhoeverUsesThemInBetween) {
  auto const one = SharedCmacs::cmac(key(3)), again = SharedCmacs::cmac(key(3));
  AesCmac own(key(3));
  std::array<uint8_t, 300> text{};
  for (size_t size : {0u, 1u, 16u, 17u, 255u, 256u, 300u}) {
    auto const part = std::span(text).first(size);
    auto const expected = macOf(own, part);
    EXPECT_EQ(macOf(*one, part), expected) << size;
    EXPECT_EQ(macOf(*again, part), expected) << size;
  }
}

TEST_F(SharedCiphers, GoWithTheLastWhoHoldsThem) {
  size_t const before = ciphers().members();
  auto one = SharedCmacs::cmac(key(4));
  auto again = SharedCmacs::cmac(key(4));
  one.reset();
  EXPECT_EQ(ciphers().members(), before + 1);
  again.reset();
  EXPECT_EQ(ciphers().members(), before);
}

TEST_F(SharedCiphers, AreForgottenAfterTheyHaveGone) {
  size_t const before = ciphers().remembered();
  for (int n = 0; n < 1000; ++n) {
    Key key{};
    key[0] = static_cast<uint8_t>(n >> 8);
    key[1] = static_cast<uint8_t>(n);
    SharedCmacs::cmac(key);
  }
  EXPECT_LE(ciphers().remembered(), 2 * before + 16);
}

TEST_F(SharedCiphers, OfAnotherSizeOfKeyAreOthers) {
  std::array<uint8_t, 32> longer;
  longer.fill(5);
  EXPECT_NE(SharedCmacs::cmac(key(5)), SharedCmacs::cmac(longer));
}

TEST_F(SharedCiphers, WithoutAKeyAreNotShared) {
  auto const none = SharedCmacs::cmac({});
  ASSERT_TRUE(none);
  EXPECT_FALSE(none->keyed());
  EXPECT_NE(none, SharedCmacs::cmac({}));
}

}  // namespace
}  // namespace Macsec
