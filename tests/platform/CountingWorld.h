#pragma once

#include "runtime/World.h"

namespace Vesk {

/// A world whose random octets count up from 0, so that a test knows them.
class CountingWorld final : public World {
 public:
  double now() const override { return 0; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t> out) override {
    for (uint8_t& octet : out) octet = next_++;
  }
  void syslog(LogMessage const&) override {}
  void exit(int) override {}

 private:
  uint8_t next_ = 0;
};

}  // namespace Vesk
