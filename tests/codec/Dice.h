#pragma once

#include <cstdint>

namespace Codec {

/// Numbers that look random and are the same in every run (splitmix64).
class Dice {
 public:
  explicit Dice(uint64_t seed) : state_(seed) {}

  uint64_t next() {
    uint64_t z = state_ += 0x9e3779b97f4a7c15;
    z = (z ^ z >> 30) * 0xbf58476d1ce4e5b9;
    z = (z ^ z >> 27) * 0x94d049bb133111eb;
    return z ^ z >> 31;
  }
  /// From 0 up to, and without, `end`.
  size_t below(size_t end) { return static_cast<size_t>(next() % end); }
  bool coin() { return next() & 1; }

 private:
  uint64_t state_;
};

}  // namespace Codec
