#include "platform/AesCmac.h"

#include <gtest/gtest.h>
#include <openssl/crypto.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/ProviderCmac.h"
#include "tests/platform/AllocationCount.h"
#include "tests/platform/OctetText.h"
#include "tests/platform/RefusingProvider.h"

namespace Macsec {
namespace {

constexpr char kKey128[] = "2b7e151628aed2a6abf7158809cf4f3c";
constexpr char kKey256[] = "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4";
constexpr char kMessage[] =
    "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710";

std::string macOf(AesCmac& cmac, std::vector<uint8_t> const& message) {
  std::array<uint8_t, AesCmac::kSize> mac;
  EXPECT_TRUE(cmac.compute(message, mac));
  return hexString(mac).charPtr();
}

std::vector<uint8_t> messageOf(size_t size) {
  auto message = octetsOf(kMessage);
  message.resize(size);
  return message;
}

TEST(AesCmac, GivesTheValuesOfRfc4493FromOneKeyedContext) {
  AesCmac cmac(octetsOf(kKey128));
  EXPECT_EQ(macOf(cmac, messageOf(0)), "bb1d6929e95937287fa37d129b756746");
  EXPECT_EQ(macOf(cmac, messageOf(16)), "070a16b46b4d4144f79bdd9dd04a287c");
  EXPECT_EQ(macOf(cmac, messageOf(40)), "dfa66747de9ae63030ca32611497c827");
  EXPECT_EQ(macOf(cmac, messageOf(64)), "51f0bebf7e3b9d92fc49741779363cfe");
  EXPECT_EQ(macOf(cmac, messageOf(16)), "070a16b46b4d4144f79bdd9dd04a287c");
}

TEST(AesCmac, TakesA256BitKeyByItsLength) {
  AesCmac cmac(octetsOf(kKey256));
  EXPECT_EQ(macOf(cmac, messageOf(0)), "028962f61b7bf89efc6b551f4667d983");
  EXPECT_EQ(macOf(cmac, messageOf(16)), "28a7023f452e8f82bd4bf28d8c37c35c");
  EXPECT_EQ(macOf(cmac, messageOf(64)), "e1992190549f6ed5696a2c056c315410");
}

TEST(AesCmac, IsThatOfOpenSslForEachLength) {
  for (char const* text : {kKey128, kKey256}) {
    AesCmac cmac(octetsOf(text));
    ProviderCmac opensslCmac(octetsOf(text));
    std::vector<uint8_t> message;
    for (size_t size = 0; size <= 1500; ++size) {
      std::array<uint8_t, AesCmac::kSize> expected;
      ASSERT_TRUE(opensslCmac.compute(message, expected));
      ASSERT_EQ(macOf(cmac, message), hexString(expected).charPtr()) << size;
      message.push_back(static_cast<uint8_t>(size * 7));
    }
  }
}

TEST(AesCmac, StaysWithoutAKeyForAnyOtherKeyLength) {
  for (size_t size : {0u, 15u, 17u, 24u, 31u, 33u}) {
    AesCmac cmac{std::vector<uint8_t>(size)};
    EXPECT_FALSE(cmac.keyed()) << size;
    std::array<uint8_t, AesCmac::kSize> mac;
    mac.fill(1);
    EXPECT_FALSE(cmac.compute(messageOf(16), mac)) << size;
    EXPECT_EQ(mac, (std::array<uint8_t, AesCmac::kSize>{})) << size;
  }
  EXPECT_FALSE(AesCmac().keyed());
}

TEST(AesCmac, MatchesOnlyTheWholeRightMac) {
  AesCmac cmac(octetsOf(kKey128));
  auto mac = octetsOf("070a16b46b4d4144f79bdd9dd04a287c");
  EXPECT_TRUE(cmac.matches(messageOf(16), mac));
  EXPECT_FALSE(cmac.matches(messageOf(16), std::span(mac).first(8)));
  for (size_t bit = 0; bit < 128; ++bit) {
    auto const mask = static_cast<uint8_t>(1u << bit % 8);
    mac[bit / 8] ^= mask;
    EXPECT_FALSE(cmac.matches(messageOf(16), mac)) << bit;
    mac[bit / 8] ^= mask;
  }
  EXPECT_FALSE(AesCmac().matches(messageOf(16), mac));
}

TEST(AesCmac, KeepsItsKeyWhenItMoves) {
  AesCmac first(octetsOf(kKey128));
  AesCmac second = std::move(first);
  EXPECT_FALSE(first.keyed());
  EXPECT_EQ(macOf(second, messageOf(0)), "bb1d6929e95937287fa37d129b756746");
}

TEST(AesCmac, AllocatesNothingPerComputation) {
  ASSERT_TRUE(opensslIsCounted());
  AesCmac cmac(octetsOf(kKey128));
  auto const message = messageOf(64);
  std::array<uint8_t, AesCmac::kSize> mac;
  uint64_t const before = allocations();
  bool computed = true;
  for (int i = 0; i < 100; ++i) computed = cmac.compute(message, mac) && computed;
  uint64_t const after = allocations();
  EXPECT_TRUE(computed);
  EXPECT_EQ(after, before);
  AesCmac another(octetsOf(kKey256));
  EXPECT_GT(allocations(), after) << "keying allocates, so the count must see it";
}

TEST(AllocationCount, CountsAnAllocationOfOpenSslOnce) {
  uint64_t const before = allocations();
  void* const block = OPENSSL_malloc(100);
  uint64_t const after = allocations();
  OPENSSL_free(block);
  EXPECT_EQ(after, before + 1);
}

#ifndef __SANITIZE_ADDRESS__
TEST(AllocationCount, SeesTheAllocationsOfCpp) {
  uint64_t const before = allocations();
  auto const octets = std::make_unique<std::array<uint8_t, 100>>();
  freedOctetsWatchedIs(*octets);
  freedOctetsWatchedIs({});
  EXPECT_GT(allocations(), before);
}
#endif

TEST(AesCmac, LeavesNoKeyInTheMemoryThatItFrees) {
  for (char const* text : {kKey128, kKey256}) {
    auto const key = octetsOf(text);
    AesCmac cmac(key);
    EXPECT_FALSE(macOf(cmac, messageOf(64)).empty());
    freedOctetsWatchedIs(key);
    cmac = AesCmac();
    uint64_t const blocks = freedBlocks();
    uint64_t const withKey = freedBlocksWithWatchedOctets();
    freedOctetsWatchedIs({});
    EXPECT_GT(blocks, 0u);
    EXPECT_EQ(withKey, 0u);
  }
}

alignas(AesCmac) uint8_t place[sizeof(AesCmac)];

bool standsInPlace(char const* hex) {
  auto const octets = octetsOf(hex);
  return std::search(std::begin(place), std::end(place), octets.begin(), octets.end()) !=
         std::end(place);
}

TEST(AesCmac, WipesWhatItKeepsOfTheKey) {
  // RFC 4493, 4: K1 and K2; the MAC of the last message, which the next one starts from.
  constexpr char const* kKept[] = {
      "fbeed618357133667c85e08f7236a8de",
      "f7ddac306ae266ccf90bc11ee46d513b",
      "070a16b46b4d4144f79bdd9dd04a287c",
  };
  auto* const cmac = std::construct_at(reinterpret_cast<AesCmac*>(place), octetsOf(kKey128));
  EXPECT_FALSE(macOf(*cmac, messageOf(16)).empty());
  for (char const* kept : kKept) EXPECT_TRUE(standsInPlace(kept)) << kept;
  std::destroy_at(cmac);
  for (char const* kept : kKept) EXPECT_FALSE(standsInPlace(kept)) << kept;
}

/// The provider is the process's, so the test runs in one of its own.
TEST(AesCmacDeathTest, AProviderThatRefusesInTheMiddleOfAMessageSpoilsThisOneAlone) {
  auto const run = [] {
    std::vector<uint8_t> const message(1500, 7);
    std::array<uint8_t, AesCmac::kSize> right;
    std::array<uint8_t, AesCmac::kSize> mac;
    EXPECT_TRUE(RefusingProvider::install());
    AesCmac cmac(octetsOf(kKey128));
    EXPECT_TRUE(cmac.compute(message, right));
    for (int worksLeft = 0; worksLeft < 4; ++worksLeft) {
      RefusingProvider::worksLeftIs(worksLeft);
      EXPECT_FALSE(cmac.compute(message, mac)) << worksLeft;
      EXPECT_EQ(mac, (std::array<uint8_t, AesCmac::kSize>{}));
      EXPECT_TRUE(cmac.compute(message, mac)) << worksLeft;
      EXPECT_EQ(mac, right);
    }
    std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Macsec
