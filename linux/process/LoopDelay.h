#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "linux/process/Limits.h"

namespace Linux {

/// How late a loop runs what is due: the delay that comes from the process itself and from the
/// machine, and not from any peer.
class LoopDelay {
 public:
  /// Upper bounds, in seconds; a last count has none.
  static constexpr std::array kBounds = {0.001, 0.01, 0.1, 1.0, 10.0};
  /// A delay above this is a frozen loop: MKPDUs of others may wait behind it for as long as it
  /// takes to miss one's own.
  static constexpr double kFrozen = Limits::kFrozen;

  /// What was due at `wanted` runs at `now`, both in seconds of one clock.
  void ran(double wanted, double now) {
    if (!std::isfinite(wanted)) return;
    last_ = std::max(0.0, now - wanted);
    sum_ += last_;
    ++counts_[static_cast<size_t>(std::ranges::lower_bound(kBounds, last_) - kBounds.begin())];
    frozen_ += last_ > kFrozen;
  }

  /// The last delay, and all of them together, in seconds.
  double last() const { return last_; }
  double sum() const { return sum_; }
  /// How many delays were at most as long as each bound, and longer than the one before.
  std::array<uint64_t, kBounds.size() + 1> const& counts() const { return counts_; }
  /// How often the loop was frozen.
  uint64_t frozen() const { return frozen_; }

 private:
  double last_ = 0;
  double sum_ = 0;
  std::array<uint64_t, kBounds.size() + 1> counts_{};
  uint64_t frozen_ = 0;
};

}  // namespace Linux
