#include "runtime/World.h"

#include <cstdlib>

#include "runtime/Assert.h"
#include "runtime/Log.h"

namespace Vesk {

namespace {

class BareWorld final : public World {
 public:
  double now() const override { return 0.0; }
  int rand() override { return 0; }
  void randomBytes(std::span<uint8_t>) override {
    VESK_ASSERT_NAMED(false, "a world with a random source has been set");
  }
  void syslog(LogMessage const&) override {}
  void exit(int status) override { std::_Exit(status); }
};

// Never destroyed: handlers may still run while the process ends.
World& bareWorld() {
  alignas(BareWorld) static unsigned char storage[sizeof(BareWorld)];
  static BareWorld* world = ::new (storage) BareWorld;
  return *world;
}

World* currentWorld = nullptr;

}  // namespace

World::World() : rateLimits_(std::make_unique<RateLimits>()) {}
World::~World() = default;

World& world() { return currentWorld ? *currentWorld : bareWorld(); }

WorldScope::WorldScope(World& world) : former_(currentWorld) { currentWorld = &world; }
WorldScope::~WorldScope() { currentWorld = former_; }

double now() { return world().now(); }

}  // namespace Vesk
