#include "host/text/TimeText.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <ctime>

namespace Macsecd {

namespace {

constexpr long long kMicroseconds = 1'000'000;
constexpr std::string_view kShape = "2026-01-31T23:59:57.104250Z";

// The text has digits where the shape has them, and elsewhere what the shape has.
bool hasShape(std::string_view text) {
  if (text.size() != kShape.size()) return false;
  for (size_t i = 0; i < kShape.size(); ++i) {
    auto const isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (isDigit(kShape[i]) ? !isDigit(text[i]) : text[i] != kShape[i]) return false;
  }
  return true;
}

int numberAt(std::string_view text, size_t at, size_t digits) {
  int number = 0;
  std::from_chars(text.data() + at, text.data() + at + digits, number);
  return number;
}

}  // namespace

std::string timeText(double secondsSince1970) {
  auto const microseconds = std::llround(secondsSince1970 * kMicroseconds);
  time_t const whole = microseconds / kMicroseconds;
  tm parts{};
  gmtime_r(&whole, &parts);
  std::array<char, 32> text;
  size_t const size = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
  return fmt::format("{}.{:06}Z", std::string_view(text.data(), size),
                     microseconds % kMicroseconds);
}

std::optional<double> timeOf(std::string_view text) {
  if (!hasShape(text)) return std::nullopt;
  tm parts{};
  parts.tm_year = numberAt(text, 0, 4) - 1900;
  parts.tm_mon = numberAt(text, 5, 2) - 1;
  parts.tm_mday = numberAt(text, 8, 2);
  parts.tm_hour = numberAt(text, 11, 2);
  parts.tm_min = numberAt(text, 14, 2);
  parts.tm_sec = numberAt(text, 17, 2);
  return static_cast<double>(timegm(&parts)) + numberAt(text, 20, 6) * 1e-6;
}

}  // namespace Macsecd
