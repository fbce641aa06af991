#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "lab/world/Random.h"

namespace Lab {

/// Choices of which the seed decides.
class Dice {
 public:
  explicit Dice(uint32_t seed, Stream stream = Stream::scenario) : random_(seed, stream, 0) {}

  bool chance(double percent) { return random_.chance(percent); }
  /// A whole number of this span, its ends included.
  uint32_t number(uint32_t from, uint32_t to) {
    return from + static_cast<uint32_t>(uint64_t{random_.number()} * (to - from + 1) >> 32);
  }
  /// Seconds of this span in tenths.
  double seconds(double from, double to) {
    return number(static_cast<uint32_t>(std::lround(from * 10)),
                  static_cast<uint32_t>(std::lround(to * 10))) /
           10.0;
  }
  template <class T>
  T const& oneOf(std::vector<T> const& all) {
    return all[number(0, static_cast<uint32_t>(all.size() - 1))];
  }

 private:
  Random random_;
};

}  // namespace Lab
