#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/Log.h"
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
  void syslog(LogMessage const& message) override { names_.emplace_back(message.handle.name()); }
  void exit(int) override {}

  /// How often a message of this name was logged.
  size_t logged(std::string_view name) const {
    return static_cast<size_t>(std::ranges::count(names_, name));
  }

 private:
  uint8_t next_ = 0;
  std::vector<std::string> names_;
};

}  // namespace Vesk
