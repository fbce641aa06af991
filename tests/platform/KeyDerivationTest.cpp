#include "platform/KeyDerivation.h"

#include <gtest/gtest.h>
#include <openssl/core_names.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

#include <array>
#include <string>
#include <vector>

#include "platform/AesCmac.h"
#include "tests/platform/CountingWorld.h"
#include "tests/platform/OctetText.h"

namespace Macsec {
namespace {

constexpr char kCak128[] = "0123456789abcdef0123456789abcdef";
constexpr char kCak256[] = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";
constexpr char kCkn[] = "6162636465666768696a6b6c6d6e6f707172737475767778797a303132333435";
constexpr char kMembers[] = "a1a2a3a4a5a6a7a8a9aaabacb1b2b3b4b5b6b7b8b9babbbc";
constexpr char kAddresses[] = "020000000001020000000002";

using Derivation = void (*)(unsigned char const*, unsigned char const*, int, Vesk::String8&);

std::string derived(Derivation function, std::string const& key, std::string const& context,
                    int bits) {
  Vesk::String8 out("left over");
  function(chars(key.c_str()), chars(context.c_str()), bits, out);
  return out.charPtr();
}

/// Hexadecimal text of the octets from `from` up to `to`.
std::string countedUp(int from, int to) {
  std::vector<uint8_t> octets;
  for (int octet = from; octet < to; ++octet) octets.push_back(static_cast<uint8_t>(octet));
  return hexString(octets).charPtr();
}

std::string ckn(std::string const& key, int cipher, std::string const& context, int bits) {
  Vesk::String8 out("left over");
  deriveCkn(chars(key.c_str()), cipher, chars(context.c_str()), bits, out);
  return out.charPtr();
}

std::string salt(char const* keyMsgId, unsigned keyNum) {
  Vesk::String8 out("left over");
  generateSalt(chars(keyMsgId), keyNum, out);
  return out.charPtr();
}

TEST(KeyDerivation, KekAndIckOfA128BitCak) {
  EXPECT_EQ(derived(deriveKek, kCak128, kCkn, 128), "d1eed7b4638f373c9b5891bb6342cdb8");
  EXPECT_EQ(derived(deriveIck, kCak128, kCkn, 128), "daf4c372bc50b80a86a39eb12b360517");
}

TEST(KeyDerivation, KekAndIckOfA256BitCakTakeTwoRounds) {
  EXPECT_EQ(derived(deriveKek, kCak256, kCkn, 256),
            "7fcb8cd5daf8adce5679896e4cce74dba5484a9746d3bedc187c99138cdfdb95");
  EXPECT_EQ(derived(deriveIck, kCak256, kCkn, 256),
            "1f44c05f57b35bf41c49f4efb28cdcfac8b311db87a846578c616534b71d3c55");
}

TEST(KeyDerivation, TheKeyChoosesTheCmacAndTheBitsTheLength) {
  EXPECT_EQ(derived(deriveKek, kCak256, kCkn, 128), "84694fb3656353f731939159516c962e");
  EXPECT_EQ(derived(deriveIck, kCak256, kCkn, 128), "f1ff6ac59c17b5a6d4534757cb872021");
  EXPECT_EQ(derived(deriveKek, kCak128, kCkn, 256).size(), 64u);
}

TEST(KeyDerivation, OnlySixteenOctetsOfTheNameCountAndAShortOneIsPadded) {
  EXPECT_EQ(derived(deriveKek, kCak128, "6162636465666768696a6b6c6d6e6f70ff", 128),
            "d1eed7b4638f373c9b5891bb6342cdb8");
  EXPECT_EQ(derived(deriveKek, kCak128, "abcdefghijklmnopqrstuvwxyz012345", 128),
            "d1eed7b4638f373c9b5891bb6342cdb8")
      << "a name that isn't hexadecimal stands for its characters";
  EXPECT_EQ(derived(deriveKek, kCak128, "abc", 128), "462578800de10126051016def5ed1f32");
}

TEST(KeyDerivation, SakFromNonceMembersAndKeyNumber) {
  EXPECT_EQ(derived(deriveSak, kCak128, countedUp(0, 16) + kMembers + "00000001", 128),
            "378f101a582e734030e761c62b7ab8c9");
  EXPECT_EQ(derived(deriveSak, kCak256, countedUp(0, 32) + kMembers + "00000001", 256),
            "a93c39a89b6bc1ea469b816c4a1da3f95ef0286081df654de56563ed5940c550");
}

TEST(KeyDerivation, CakAndCknFromAnEapKey) {
  std::string const session = "0d" + countedUp(0x80, 0xc0);
  std::string const key128 = countedUp(0x40, 0x50);
  EXPECT_EQ(derived(deriveCak, key128, kAddresses, 128), "d595492b9b0faadcc045f48ff84d1ded");
  EXPECT_EQ(ckn(key128, 128, session + kAddresses, 128), "f2f3494f070909bce38f4c3616ca1724");
  std::string const key256 = countedUp(0x40, 0x60);
  EXPECT_EQ(derived(deriveCak, key256, kAddresses, 256),
            "143c2e992a3a661de6d86ff254ca3e38000d54aebc99f3129c46fc6731e6e5de");
}

/// The provider's own key derivation in counter mode, whose counter has 32 bits, without a length
/// of its own behind the context.
std::string kbkdf(std::vector<uint8_t> key, std::string label, std::vector<uint8_t> context,
                  size_t size) {
  EVP_KDF* const kdf = EVP_KDF_fetch(nullptr, "KBKDF", nullptr);
  EVP_KDF_CTX* const derivation = EVP_KDF_CTX_new(kdf);
  std::string mac = "CMAC", cipher = key.size() == 16 ? "AES-128-CBC" : "AES-256-CBC";
  int hasLength = 0;
  OSSL_PARAM const params[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_MAC, mac.data(), 0),
      OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_CIPHER, cipher.data(), 0),
      OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, key.data(), key.size()),
      OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SALT, label.data(), label.size()),
      OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_INFO, context.data(), context.size()),
      OSSL_PARAM_construct_int(OSSL_KDF_PARAM_KBKDF_USE_L, &hasLength),
      OSSL_PARAM_construct_end()};
  std::vector<uint8_t> out(size);
  EXPECT_EQ(EVP_KDF_derive(derivation, out.data(), out.size(), params), 1);
  EVP_KDF_CTX_free(derivation);
  EVP_KDF_free(kdf);
  return hexString(out).charPtr();
}

/// The function of 6.2.1 by the text of the standard, with a counter of so many octets.
std::string byTheStandard(std::vector<uint8_t> const& key, std::string_view label,
                          std::vector<uint8_t> const& context, size_t size, size_t counterSize) {
  AesCmac cmac(key);
  std::vector<uint8_t> out;
  for (uint8_t round = 1; out.size() < size; ++round) {
    std::vector<uint8_t> input(counterSize - 1);
    input.push_back(round);
    input.insert(input.end(), label.begin(), label.end());
    input.push_back(0);
    input.insert(input.end(), context.begin(), context.end());
    std::array<uint8_t, AesCmac::kSize> block{};
    EXPECT_TRUE(cmac.compute(input, block));
    out.insert(out.end(), block.begin(), block.end());
  }
  return hexString(out).charPtr();
}

TEST(KeyDerivation, IsThatOfTheProviderButForTheSizeOfTheCounter) {
  for (char const* const cak : {kCak128, kCak256}) {
    auto const key = octetsOf(cak);
    auto context = octetsOf("6162636465666768696a6b6c6d6e6f70");
    size_t const size = key.size();
    context.push_back(static_cast<uint8_t>(8 * size >> 8));
    context.push_back(static_cast<uint8_t>(8 * size));
    EXPECT_EQ(byTheStandard(key, "IEEE8021 KEK", context, size, 4),
              kbkdf(key, "IEEE8021 KEK", context, size));
    EXPECT_EQ(byTheStandard(key, "IEEE8021 KEK", context, size, 1),
              derived(deriveKek, cak, kCkn, static_cast<int>(8 * size)));
  }
}

TEST(KeyDerivation, TextsOfEitherCaseGiveTheSameLowerCaseResult) {
  EXPECT_EQ(derived(deriveKek, "0123456789ABCDEF0123456789ABCDEF", kCkn, 128),
            "d1eed7b4638f373c9b5891bb6342cdb8");
  EXPECT_EQ(derived(deriveSak, kCak128, "AB", 128), derived(deriveSak, kCak128, "ab", 128));
}

TEST(KeyDerivation, AKeyOfAnotherLengthOrNotHexadecimalGivesNoKey) {
  for (std::string key :
       {"", "00", "0123456789abcdef0123456789abcde", "0123456789abcdef0123456789abcdeg",
        "0123456789abcdef0123456789abcdef0123456789abcdef"}) {
    for (Derivation function : {deriveKek, deriveIck, deriveSak, deriveCak}) {
      EXPECT_EQ(derived(function, key, "00", 128), "") << key;
    }
    EXPECT_EQ(ckn(key, 128, "00", 128), "") << key;
  }
  EXPECT_EQ(derived(deriveKek, std::string(kCak256) + "00", kCkn, 128), "");
}

TEST(KeyDerivation, AContextThatIsNotHexadecimalOrAnUnknownLengthGivesNoKey) {
  for (char const* context : {"0", "0g", "02:00"}) {
    EXPECT_EQ(derived(deriveSak, kCak128, context, 128), "") << context;
    EXPECT_EQ(ckn(kCak128, 128, context, 128), "") << context;
  }
  for (int bits : {-128, 0, 100, 264, 65536}) {
    EXPECT_EQ(derived(deriveKek, kCak128, kCkn, bits), "") << bits;
    EXPECT_EQ(derived(deriveSak, kCak128, "00", bits), "") << bits;
  }
  Vesk::String8 out("left over");
  deriveKek(nullptr, nullptr, 128, out);
  EXPECT_TRUE(out.empty());
}

TEST(Salt, MixesTheKeyNumberIntoTheTopOfTheMemberIdentifier) {
  EXPECT_EQ(salt("000000000000000000000000", 0x01020304), "030401020000000000000000");
  EXPECT_EQ(salt("a1a2a3a4a5a6a7a8a9aaabac", 1), "a1a3a3a4a5a6a7a8a9aaabac");
  EXPECT_EQ(salt("ffffffffffffffffffffffff", 0xffffffff), "00000000ffffffffffffffff");
}

TEST(Salt, OfAnEmptyOrForeignIdentifierIsThatOfZeros) {
  EXPECT_EQ(salt("", 1), "000100000000000000000000");
  EXPECT_EQ(salt("not a member", 1), "000100000000000000000000");
  Vesk::String8 out;
  generateSalt(nullptr, 1, out);
  EXPECT_EQ(out, "000100000000000000000000");
}

TEST(RandomNumber, IsAsManyBitsFromTheWorldInLowerCase) {
  Vesk::CountingWorld world;
  Vesk::WorldScope scope(world);
  Vesk::String8 out;
  randomNumberGenerator(96, out);
  EXPECT_EQ(out, "000102030405060708090a0b");
  randomNumberGenerator(128, out);
  EXPECT_EQ(out, "0c0d0e0f101112131415161718191a1b");
  randomNumberGenerator(256, out);
  EXPECT_EQ(out.length(), 64u);
}

TEST(RandomNumber, OfNoBitsIsTheEmptyText) {
  Vesk::String8 out("left over");
  randomNumberGenerator(0, out);
  EXPECT_TRUE(out.empty());
  randomNumberGenerator(-8, out);
  EXPECT_TRUE(out.empty());
}

}  // namespace
}  // namespace Macsec
