#pragma once

#include <optional>

#include "runtime/World.h"

namespace Support {

/// What the worlds of a test program have in common: the key under which keys are stored, so that
/// one switch can be given what was made for another one, and the trace levels. It is current where
/// a test has entered no world.
class CommonWorld final : public Vesk::World {
 public:
  static CommonWorld& instance() {
    static CommonWorld world;
    return world;
  }
  /// What keeps it current; a test that resets it stands in no world.
  static std::optional<Vesk::WorldScope>& scope() {
    instance();  // which has to end behind it
    static std::optional<Vesk::WorldScope> scope;
    return scope;
  }
  double now() const override { return 0.0; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t> out) override {
    for (uint8_t& byte : out) byte = next_++;
  }
  void syslog(Vesk::LogMessage const&) override {}
  void exit(int) override {}

 private:
  CommonWorld() = default;

  uint8_t next_ = 0;
};

}  // namespace Support
