#pragma once

#include <cstdint>
#include <span>
#include <utility>

#include "runtime/World.h"

namespace Fuzz {

/// Unwinds out of a switch that ended its process, as it may.
struct ProcessEnded {
  int status;
};

/// A world that is the same in every run, and keeps nothing of what is told.
class FuzzWorld final : public Vesk::World {
 public:
  explicit FuzzWorld(uint64_t seed = 1) : state_(seed) {}

  double now() const override { return time; }
  int rand() override { return static_cast<int>(next() >> 33); }
  void randomBytes(std::span<uint8_t> out) override {
    for (uint8_t& octet : out) octet = static_cast<uint8_t>(next() >> 56);
  }
  void syslog(Vesk::LogMessage const&) override {}
  /// Whoever is taken down by that may say so again.
  void exit(int status) override {
    if (!std::exchange(hasEnded_, true)) throw ProcessEnded{status};
  }
  int fipsModeSet(int) override { return 1; }

  double time = 0;

 private:
  uint64_t next() {
    state_ = state_ * 0x5851'f42d'4c95'7f2d + 0x1405'7b7e'f767'814f;
    return state_;
  }

  uint64_t state_;
  bool hasEnded_ = false;
};

}  // namespace Fuzz
