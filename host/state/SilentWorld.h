#pragma once

#include <algorithm>
#include <span>

#include "runtime/World.h"

namespace Macsecd {

/// Takes the place of another world while nobody is to hear of what happens: a tree is rebuilt, or
/// the objects of a process that has died are on their way out. Its clock stands.
class SilentWorld final : public Vesk::World {
 public:
  explicit SilentWorld(Vesk::World& other) : World(other), now_(other.now()) {}

  double now() const override { return now_; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t> out) override { std::ranges::fill(out, 0); }
  void syslog(Vesk::LogMessage const&) override {}
  void exit(int) override {}

 private:
  double const now_;
};

}  // namespace Macsecd
