#include "platform/KeyWrap.h"

#include <gtest/gtest.h>
#include <openssl/err.h>

#include <algorithm>
#include <memory>

#include "tests/platform/AllocationCount.h"
#include "tests/platform/OctetText.h"

namespace Macsec {
namespace {

constexpr char kKek128[] = "000102030405060708090a0b0c0d0e0f";
constexpr char kKek256[] = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";
constexpr char kWrapped128[] = "00112233445566778899aabbccddeeff";
constexpr char kWrapped256[] = "00112233445566778899aabbccddeeff000102030405060708090a0b0c0d0e0f";

struct Vector {
  char const* kek;
  char const* key;
  char const* wrapped;
};

// RFC 3394 4.1, 4.3 and 4.6, and the key of an MKPDU.
constexpr Vector kVectors[] = {
    {kKek128, kWrapped128, "1fa68b0a8112b447aef34bd8fb5a7b829d3e862371d2cfe5"},
    {kKek256, kWrapped128, "64e8c3f9ce0f5ba263e9777905818a2a93c8191e7d6e8ae7"},
    {kKek256, kWrapped256,
     "28c9f404c4b810f4cbccb35cfb87f8263f5786e2d80ed326cbc7f0e71a99f43bfb988b9b7a02dd21"},
    {"d1eed7b4638f373c9b5891bb6342cdb8", "378f101a582e734030e761c62b7ab8c9",
     "116771c88648360e9aaff76dc6e18292b6496b89c29c10fe"},
};

bool allZero(std::vector<uint8_t> const& octets) {
  return std::all_of(octets.begin(), octets.end(), [](uint8_t octet) { return octet == 0; });
}

TEST(KeyWrap, GivesTheValuesOfRfc3394BothWaysAndAgain) {
  for (Vector const& v : kVectors) {
    KeyWrap wrap(octetsOf(v.kek));
    for (int round = 0; round < 2; ++round) {
      std::vector<uint8_t> wrapped(std::string_view(v.wrapped).size() / 2);
      ASSERT_TRUE(wrap.wrap(octetsOf(v.key), wrapped)) << v.wrapped;
      EXPECT_EQ(hexString(wrapped), v.wrapped);
      std::vector<uint8_t> key(wrapped.size() - KeyWrap::kOverhead);
      ASSERT_TRUE(wrap.unwrap(wrapped, key)) << v.wrapped;
      EXPECT_EQ(hexString(key), v.key);
    }
  }
}

TEST(KeyWrap, RefusesAnyFlippedBitAndThenStillUnwrapsTheRightOne) {
  for (Vector const& v : kVectors) {
    KeyWrap wrap(octetsOf(v.kek));
    auto wrapped = octetsOf(v.wrapped);
    std::vector<uint8_t> key(wrapped.size() - KeyWrap::kOverhead);
    for (size_t bit = 0; bit < 8 * wrapped.size(); ++bit) {
      auto const mask = static_cast<uint8_t>(1u << bit % 8);
      wrapped[bit / 8] ^= mask;
      key.assign(key.size(), 1);
      EXPECT_FALSE(wrap.unwrap(wrapped, key)) << v.wrapped << " bit " << bit;
      EXPECT_TRUE(allZero(key));
      wrapped[bit / 8] ^= mask;
    }
    EXPECT_TRUE(wrap.unwrap(wrapped, key));
    EXPECT_EQ(hexString(key), v.key);
  }
  EXPECT_EQ(ERR_peek_error(), 0u) << "a refusal leaves nothing in the queue of errors";
}

TEST(KeyWrap, RefusesAKeyWrappedUnderAnotherKek) {
  KeyWrap other(octetsOf("ffffffffffffffffffffffffffffffff"));
  std::vector<uint8_t> key(16);
  EXPECT_FALSE(other.unwrap(octetsOf(kVectors[0].wrapped), key));
}

TEST(KeyWrap, RefusesOtherSizes) {
  KeyWrap wrap(octetsOf(kKek128));
  for (size_t size : {0u, 8u, 15u, 24u, 31u, 40u}) {
    std::vector<uint8_t> octets(size, 1);
    std::vector<uint8_t> out(size + KeyWrap::kOverhead, 1);
    EXPECT_FALSE(wrap.wrap(octets, out)) << size;
    EXPECT_TRUE(allZero(out)) << size;
    out.assign(out.size(), 1);
    EXPECT_FALSE(wrap.unwrap(out, octets)) << size;
    EXPECT_TRUE(allZero(octets)) << size;
  }
  std::vector<uint8_t> small(23);
  EXPECT_FALSE(wrap.wrap(octetsOf(kWrapped128), small));
}

TEST(KeyWrap, DoesNothingWithoutAKekOfAnAesLength) {
  for (size_t size : {0u, 15u, 24u, 33u}) {
    KeyWrap wrap{std::vector<uint8_t>(size)};
    std::vector<uint8_t> out(24);
    EXPECT_FALSE(wrap.keyed()) << size;
    EXPECT_FALSE(wrap.wrap(octetsOf(kWrapped128), out)) << size;
  }
}

TEST(KeyWrap, AllocatesNothingUntilThereIsAKeyToWrap) {
  ASSERT_TRUE(opensslIsCounted());
  auto const kek = octetsOf(kKek128);
  uint64_t const before = allocations();
  KeyWrap wrap(kek);
  uint64_t const after = allocations();
  EXPECT_EQ(after, before);
  std::vector<uint8_t> wrapped(24);
  uint64_t const beforeKey = allocations();
  EXPECT_TRUE(wrap.wrap(octetsOf(kWrapped128), wrapped));
  EXPECT_GT(allocations(), beforeKey) << "a cipher is made, so the count must see it";
}

alignas(KeyWrap) uint8_t place[sizeof(KeyWrap)];

TEST(KeyWrap, WipesTheKekAndLeavesNoneInTheMemoryThatItFrees) {
  auto const kek = octetsOf("d1eed7b4638f373c9b5891bb6342cdb8");
  auto const isInPlace = [&] {
    return std::search(std::begin(place), std::end(place), kek.begin(), kek.end()) !=
           std::end(place);
  };
  auto* const wrap = std::construct_at(reinterpret_cast<KeyWrap*>(place), kek);
  EXPECT_TRUE(isInPlace());
  std::vector<uint8_t> wrapped(24);
  std::vector<uint8_t> key(16);
  freedOctetsWatchedIs(kek);
  bool const right = wrap->wrap(octetsOf(kWrapped128), wrapped) && wrap->unwrap(wrapped, key);
  uint64_t const blocks = freedBlocks();
  uint64_t const withKek = freedBlocksWithWatchedOctets();
  freedOctetsWatchedIs({});
  EXPECT_TRUE(right);
  EXPECT_GT(blocks, 0u) << "the cipher goes with the key that it was for";
  EXPECT_EQ(withKek, 0u);
  std::destroy_at(wrap);
  EXPECT_FALSE(isInPlace());
}

}  // namespace
}  // namespace Macsec
