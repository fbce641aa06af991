#include "linux/process/WallClock.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <ctime>

namespace Linux {

namespace {

double secondsOf(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

double wallTimeOf(double seconds) {
  return seconds + secondsOf(CLOCK_REALTIME) - secondsOf(CLOCK_BOOTTIME);
}

std::string wallTimeText(double secondsSince1970) {
  auto const milliseconds = static_cast<long long>(std::floor(secondsSince1970 * 1000));
  time_t const whole = milliseconds / 1000;
  tm parts{};
  localtime_r(&whole, &parts);
  std::array<char, 32> text;
  size_t const size = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
  return fmt::format("{}.{:03}", std::string_view(text.data(), size), milliseconds % 1000);
}

}  // namespace Linux
