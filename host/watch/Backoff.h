#pragma once

#include <algorithm>
#include <cmath>

namespace Macsecd {

/// How long to wait before something is tried again: at first so long, then twice as long each
/// time, and never longer than the most. In seconds.
class Backoff {
 public:
  constexpr Backoff(double first, double most) : first_(first), most_(most) {}

  /// The wait that begins now, after one more attempt.
  double next() { return waitAfter(waits_++); }
  /// All is well: the next wait is the first one again.
  void reset() { waits_ = 0; }
  /// Something has been waited for since all was well.
  bool isRunning() const { return waits_ > 0; }
  /// The wait that follows so many others.
  double waitAfter(int waits) const { return std::min(std::ldexp(first_, waits), most_); }

 private:
  double first_;
  double most_;
  int waits_ = 0;
};

}  // namespace Macsecd
