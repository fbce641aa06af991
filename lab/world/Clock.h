#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace Lab {

/// The time of what isn't due.
inline constexpr double kNever = std::numeric_limits<double>::infinity();

/// The virtual time of one simulation in seconds from 0.
struct Clock {
  double now = 0;
};

/// Sums of decimal fractions differ in their last bits: times that lie this close are one instant.
/// Both functions take the difference, so that they agree to the last bit.
constexpr double kInstant = 1e-7;

inline bool sameInstant(double a, double b) { return std::abs(a - b) < kInstant; }
inline bool notAfter(double a, double b) { return a - b < kInstant; }

/// The number nearest to the time in whole microseconds.
inline double roundedTime(double time) { return std::round(time * 1e6) / 1e6; }

/// Seconds with at least three decimals and at most six: "7.001".
std::string timeText(double time);

/// What a line of a scenario says behind its time: "at 5 shutdown A" gives "shutdown A".
std::string withoutTime(std::string const& line);

}  // namespace Lab
