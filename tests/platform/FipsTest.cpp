#include "platform/Fips.h"

#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <stdexcept>

#include "platform/AesCmac.h"
#include "platform/KeyDerivation.h"
#include "platform/KeyWrap.h"
#include "platform/WardcodeLib.h"
#include "tests/platform/SwitchableProvider.h"
#include "tests/support/TestWorld.h"

// The header of OpenSSL makes it a macro once more.
#undef RAND_cleanup

namespace Macsec {
namespace {

using Mood = SwitchableProvider::Mood;

/// The mode is the process's, so each test runs in one of its own.
class FipsModeDeathTest : public ::testing::Test {
 protected:
  FipsModeDeathTest() { Vesk::TraceHandle::streamLevelsIs("Macsec::Fips", Vesk::kAllTraceLevels); }
  ~FipsModeDeathTest() override { Vesk::TraceHandle::streamLevelsIs("", 0); }

  void inProcess(std::function<void()> const& body) {
    auto const run = [&] {
      Vesk::WorldScope const scope(world);
      body();
      std::_Exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
  }
  static std::string providerOfCipher() {
    EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
    std::string const name =
        cipher ? OSSL_PROVIDER_get0_name(EVP_CIPHER_get0_provider(cipher)) : "none";
    EVP_CIPHER_free(cipher);
    return name;
  }
  static std::string providerOfRandomness() {
    uint8_t octet;
    EXPECT_EQ(RAND_bytes(&octet, 1), 1);  // tidy: allow(randomness) whose generator it is counts
    EVP_RAND* const rand = EVP_RAND_CTX_get0_rand(RAND_get0_public(nullptr));
    return OSSL_PROVIDER_get0_name(EVP_RAND_get0_provider(rand));
  }
  static bool authenticates() {
    std::array<uint8_t, 16> const key{1, 2, 3};
    std::array<uint8_t, AesCmac::kSize> mac;
    return AesCmac(key).compute(key, mac);
  }
  static bool wraps() {
    std::array<uint8_t, 16> const key{1, 2, 3};
    std::array<uint8_t, 24> wrapped;
    std::array<uint8_t, 16> opened;
    KeyWrap kek(key);
    return kek.wrap(key, wrapped) && kek.unwrap(wrapped, opened) && opened == key;
  }
  static Vesk::String8 derivedKek() {
    Vesk::String8 kek;
    deriveKek(bytesOf("0123456789abcdef0123456789abcdef"), bytesOf("c0de"), 128, kek);
    return kek;
  }
  static bool storesKeys() {
    return WardcodeLib::doDecodeKey(WardcodeLib::doEncodeKey("0011")) == "0011";
  }

  Support::TestWorld world;
};

TEST_F(FipsModeDeathTest, EverythingRunsOnTheFipsProvider) {
  inProcess([&] {
    SwitchableProvider::install(Mood::offersAll);
    EXPECT_EQ(providerOfCipher(), "default");
    EXPECT_EQ(FIPS_mode_set(1), 1);
    EXPECT_EQ(providerOfCipher(), "fips");
    EXPECT_TRUE(authenticates());
    EXPECT_TRUE(wraps());
    EXPECT_TRUE(storesKeys());
    EXPECT_EQ(FIPS_mode_set(1), 1);
    EXPECT_EQ(world.logs.size(), 0u);
  });
}

TEST_F(FipsModeDeathTest, WhatTheFipsProviderLacksIsFoundNowhereElse) {
  inProcess([&] {
    SwitchableProvider::install(Mood::offersNothing);
    EXPECT_TRUE(authenticates() && wraps() && storesKeys());
    EXPECT_EQ(EVP_default_properties_enable_fips(nullptr, 1), 1);
    EXPECT_EQ(providerOfCipher(), "none");
    EXPECT_EQ(missingAlgorithm(), "AES-128-CBC");
    EXPECT_FALSE(authenticates());
    EXPECT_FALSE(wraps());
    EXPECT_EQ(derivedKek(), "");
    EXPECT_THROW(storesKeys(), std::runtime_error);
  });
}

TEST_F(FipsModeDeathTest, TheMacIsTheProvidersOwn) {
  inProcess([&] {
    SwitchableProvider::install(Mood::offersAll, "CMAC");
    EXPECT_TRUE(authenticates());
    ASSERT_TRUE(OSSL_PROVIDER_try_load(nullptr, "fips", 1));
    EXPECT_EQ(EVP_default_properties_enable_fips(nullptr, 1), 1);
    EXPECT_EQ(providerOfCipher(), "fips");
    EXPECT_FALSE(authenticates());
  });
}

TEST_F(FipsModeDeathTest, AProviderWithoutAnAlgorithmThatIsNeededChangesNothingAndTheLogNamesIt) {
  for (std::string const name :
       {"AES-256-CBC", "AES-128-WRAP", "AES-256-WRAP", "AES-256-GCM", "CMAC", "CTR-DRBG"}) {
    inProcess([&] {
      SwitchableProvider::install(Mood::offersAll, name);
      EXPECT_EQ(FIPS_mode_set(1), 0);
      EXPECT_EQ(EVP_default_properties_is_fips_enabled(nullptr), 0);
      EXPECT_TRUE(authenticates() && wraps() && storesKeys());
      ASSERT_EQ(world.logs.size(), 1u);
      EXPECT_EQ(world.logs[0].name, "FIPS_ALGORITHM_MISSING");
      EXPECT_EQ(world.logs[0].arguments[0], name);
      EXPECT_EQ(ERR_peek_error(), 0u);
    });
  }
}

TEST_F(FipsModeDeathTest, OffFindsEveryAlgorithmAgain) {
  inProcess([&] {
    SwitchableProvider::install(Mood::offersNothing);
    EXPECT_EQ(EVP_default_properties_enable_fips(nullptr, 1), 1);
    EXPECT_EQ(FIPS_mode_set(0), 1);
    EXPECT_EQ(providerOfCipher(), "default");
    EXPECT_TRUE(authenticates() && wraps() && storesKeys());
  });
}

TEST_F(FipsModeDeathTest, AProviderThatFailsChangesNothingAndIsNamed) {
  inProcess([&] {
    SwitchableProvider::install(Mood::fails);
    EXPECT_EQ(FIPS_mode_set(1), 0);
    EXPECT_EQ(EVP_default_properties_is_fips_enabled(nullptr), 0);
    EXPECT_EQ(providerOfCipher(), "default");
    EXPECT_TRUE(authenticates() && wraps() && storesKeys());
    ASSERT_EQ(world.logs.size(), 1u);
    EXPECT_EQ(world.logs[0].name, "FIPS_PROVIDER_MISSING");
    EXPECT_EQ(world.logs[0].arguments[0], "fips");
    EXPECT_NE(world.logs[0].text.find("openssl fipsinstall"), std::string::npos);
    EXPECT_EQ(world.traced(": Provider fips can't be loaded: error:"), 1u);
  });
}

TEST_F(FipsModeDeathTest, AMachineWithoutTheModuleFailsAlike) {
  inProcess([&] {
    setenv("OPENSSL_MODULES", "/nowhere", 1);
    EXPECT_EQ(FIPS_mode_set(1), 0);
    EXPECT_EQ(world.logs.size(), 1u);
    EXPECT_EQ(providerOfCipher(), "default");
    EXPECT_EQ(FIPS_mode_set(0), 1);
    EXPECT_TRUE(authenticates());
  });
}

TEST_F(FipsModeDeathTest, RandomGeneratorsThatHaveGoneComeBackFromTheFipsProvider) {
  inProcess([&] {
    SwitchableProvider::install(Mood::offersAll);
    EXPECT_EQ(providerOfRandomness(), "default");
    EXPECT_EQ(FIPS_mode_set(1), 1);
    EXPECT_EQ(providerOfRandomness(), "default");
    RAND_cleanup();
    EXPECT_EQ(providerOfRandomness(), "fips");
  });
}

}  // namespace
}  // namespace Macsec
