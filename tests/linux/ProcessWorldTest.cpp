#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <vector>

#include "linux/ProcessWorld.h"

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

}  // namespace
}  // namespace Linux
