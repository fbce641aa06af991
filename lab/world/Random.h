#pragma once

#include <cstdint>
#include <random>
#include <span>

namespace Lab {

/// Who draws from a seed: streams of one seed don't disturb each other.
enum class Stream : uint32_t { delays, keys, wire, hostKey, scenario, swarm };

/// A seeded source: the same seed, stream and owner give the same numbers everywhere.
class Random {
 public:
  Random(uint32_t seed, Stream stream, uint32_t owner) {
    std::seed_seq sequence{seed, static_cast<uint32_t>(stream), owner};
    generator_.seed(sequence);
  }

  uint32_t number() { return static_cast<uint32_t>(generator_()); }
  /// True with a chance of `percent` in a hundred.
  bool chance(double percent) { return number() < percent / 100 * 4294967296.0; }
  void fill(std::span<uint8_t> out) {
    for (uint8_t& octet : out) octet = static_cast<uint8_t>(number() >> 24);
  }

 private:
  std::mt19937 generator_;
};

}  // namespace Lab
