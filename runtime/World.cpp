#include "runtime/World.h"

#include "runtime/Assert.h"
#include "runtime/Log.h"

namespace Vesk {

namespace {

World* currentWorld = nullptr;
constexpr WorldSwitches kOutside{.writesAreLogged = true};

void enter(World* world) {
  currentWorld = world;
  Detail::switches = world ? &world->switches() : &kOutside;
}

}  // namespace

WorldSwitches const* Detail::switches = &kOutside;

World::World() : rateLimits_(std::make_unique<RateLimits>()), kept_(std::make_shared<Kept>()) {}
World::World(World& other)
    : rateLimits_(std::make_unique<RateLimits>()),
      kept_(other.kept_),
      switches_{.visitsAreFiltered = other.switches_.visitsAreFiltered,
                .objectsHaveHomes = other.switches_.objectsHaveHomes} {}
World::~World() { VESK_ASSERT(currentWorld != this); }

void World::attributeLogIs(bool on) {
  attributeLog_ = on;
  writesAreLoggedAsAsked();
}

void World::attributeFollowerIs(AttributeFollower& follower) {
  followers_.push_back(&follower);
  writesAreLoggedAsAsked();
}

void World::attributeFollowerDel(AttributeFollower& follower) {
  std::erase(followers_, &follower);
  writesAreLoggedAsAsked();
}

void World::writesAreLoggedAsAsked() {
  switches_.writesAreLogged = attributeLog_ || !followers_.empty();
}

World& world() {
  VESK_ASSERT_NAMED(currentWorld, "the switch runs in its world");
  return *currentWorld;
}

bool hasWorld() { return currentWorld; }

WorldScope::WorldScope(World& world) : former_(currentWorld) { enter(&world); }
WorldScope::~WorldScope() { enter(former_); }

double now() { return world().now(); }

}  // namespace Vesk
