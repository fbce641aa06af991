#pragma once

#include <cstdint>

#include "host/text/Limits.h"

namespace Macsecd {

/// How often somebody may tell of something that may change all the time: so many times in a
/// minute. What comes beyond that waits for the next one.
class TellingRate {
 public:
  static constexpr uint32_t kMost = Limits::kTellings;
  static constexpr double kPeriod = Limits::kTellingPeriod;

  /// Whether there is room for one more at this time; it is taken.
  bool take(double now) {
    if (now >= end_) {
      end_ = now + kPeriod;
      taken_ = 0;
    }
    if (taken_ == kMost) return false;
    ++taken_;
    return true;
  }
  /// When there is room again after a refusal.
  double nextTime() const { return end_; }

 private:
  double end_ = 0;
  uint32_t taken_ = 0;
};

}  // namespace Macsecd
