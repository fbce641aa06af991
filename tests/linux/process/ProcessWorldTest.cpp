#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "linux/process/ProcessWorld.h"
#include "model/Factories.h"
#include "tests/platform/SwitchableProvider.h"

namespace Linux {
namespace {

double bootTime() {
  timespec time;
  clock_gettime(CLOCK_BOOTTIME, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

TEST(ProcessWorld, TheClockIsTheMachinesAndGoesOnAcrossProcesses) {
  ProcessWorld world([](auto const&) {});
  Vesk::WorldScope scope(world);
  double const before = bootTime();
  double const now = Vesk::now();
  EXPECT_LE(before, now);
  EXPECT_LE(now, bootTime());
}

TEST(ProcessWorld, TheTimeStandsStillWithinATurnOfTheLoop) {
  ProcessWorld world([](auto const&) {});
  double const before = world.now();
  world.turnEnds();
  double const now = world.now();
  EXPECT_GE(now, before);
  while (bootTime() <= now) {
  }
  EXPECT_EQ(world.now(), now);
  world.turnEnds();
  EXPECT_GT(world.now(), now);
}

TEST(ProcessWorld, RandomBytesFillWhateverIsAskedFor) {
  ProcessWorld world([](auto const&) {});
  std::vector<uint8_t> a(100000, 0);
  std::vector<uint8_t> b(100000, 0);
  world.randomBytes(a);
  world.randomBytes(b);
  EXPECT_NE(a, b);
  EXPECT_TRUE(std::any_of(a.end() - 64, a.end(), [](uint8_t byte) { return byte != 0; }));
  for (int i = 0; i < 100; ++i) EXPECT_GE(world.rand(), 0);
}

std::string providerOfRandomness() {
  EVP_RAND* const rand = EVP_RAND_CTX_get0_rand(RAND_get0_private(nullptr));
  return OSSL_PROVIDER_get0_name(EVP_RAND_get0_provider(rand));
}

TEST(ProcessWorldDeathTest, RandomBytesComeFromTheFipsProviderOnceItIsSet) {
  auto const run = [] {
    Macsec::SwitchableProvider::install(Macsec::SwitchableProvider::Mood::offersAll);
    ProcessWorld world([](auto const&) {});
    std::vector<uint8_t> octets(32);
    world.randomBytes(octets);
    EXPECT_EQ(providerOfRandomness(), "default");
    world.randCleanup();
    EXPECT_EQ(world.fipsModeSet(1), 1);
    world.randomBytes(octets);
    EXPECT_EQ(providerOfRandomness(), "fips");
    std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
}

TEST(ProcessWorldDeathTest, RandomBytesWithoutAGeneratorAreAnErrorThatSaysSo) {
  auto const run = [] {
    using Macsec::SwitchableProvider;
    SwitchableProvider::install(SwitchableProvider::Mood::offersNothing);
    EVP_default_properties_enable_fips(nullptr, 1);
    ProcessWorld world([](auto const&) {});
    std::vector<uint8_t> octets(32);
    try {
      world.randomBytes(octets);
    } catch (std::runtime_error const& error) {
      std::string_view const text = error.what();
      bool const isClear = text.starts_with("OpenSSL gives no random octets: error:") &&
                           text.ends_with("; see its providers in openssl.cnf");
      std::_Exit(isClear ? 0 : 2);
    }
    std::_Exit(1);
  };
  EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
}

TEST(ProcessWorld, MessagesGoToTheSinkThatTheHostGave) {
  std::string text;
  ProcessWorld world([&](Vesk::LogMessage const& message) { text = message.text; });
  Vesk::WorldScope scope(world);
  Vesk::LogHandle const handle("NAME", Vesk::LogSeverity::notice, "says %s", "", "", 0.0, 0.0);
  Vesk::log(handle, "hello");
  EXPECT_EQ(text, "says hello");
}

TEST(ProcessWorldDeathTest, ExitEndsTheProcess) {
  ProcessWorld world([](auto const&) {});
  EXPECT_EXIT(world.exit(3), ::testing::ExitedWithCode(3), "");
}

// The configuration engine ends the process from within handlers of entities that live.
TEST(ProcessWorldDeathTest, NothingIsDestroyedUnderTheHandlersThatStillRun) {
  struct Bomb {
    ~Bomb() { std::_Exit(9); }
  };
  struct Ends final : Vesk::Reactor<Macsec::Status const, ProcessWorld, Ends> {
    using Reactor::Reactor;
    void onMacsecEnabled() override { owner().exit(0); }
  };
  auto const run = [] {
    ProcessWorld world([](auto const&) {});
    static Bomb const bomb;
    Bomb const local;
    auto const status = Macsec::statusFactory("status");
    auto ends = Vesk::make<Ends>(world, status);
    std::setvbuf(stderr, nullptr, _IOFBF, 4096);
    std::fputs("written before", stderr);
    status->macsecEnabledIs(!status->macsecEnabled());
  };
  EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "written before");
}

}  // namespace
}  // namespace Linux
