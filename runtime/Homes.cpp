#include "runtime/Homes.h"

#include <new>
#include <utility>

#include "runtime/HomeBlocks.h"
#include "runtime/PtrInterface.h"
#include "runtime/World.h"

namespace Vesk {

Homes::~Homes() {
  for (auto const& [interface, home] : homes_) home->homes_ = nullptr;
}

Home* Homes::homeIs(Lumo::IntfId intfId) {
  Home*& home = homes_[intfId.index()];
  if (home) return home;
  if (void* const block = HomeBlocks::take()) {
    Home::begin_ = HomeBlocks::begin();
    home = new (block) Home(this, intfId.index());
    return home;
  }
  homes_.erase(intfId.index());
  return nullptr;
}

size_t Homes::octets() const {
  size_t octets = 0;
  for (auto const& [interface, home] : homes_) octets += home->octets();
  return octets;
}

// The home stays, whatever becomes of the object.
BesideScope::BesideScope(void const* object)
    : former_(std::exchange(Home::present_, object)), home_(Home::of(object)) {
  if (home_) ++home_->objects_;
}

BesideScope::~BesideScope() {
  Home::present_ = former_;
  if (home_) home_->letGo();
}

HomeScope::HomeScope(Lumo::IntfId intfId) : former_(Home::present_) {
  if (intfId.empty() || VFPtrInterface::enableThreadSafePointers != 0) return;
  if (!hasWorld() || !world().switches().objectsHaveHomes) return;
  home_ = world().kept<Homes>().homeIs(intfId);
  if (!home_) return;
  ++home_->objects_;
  Home::present_ = home_;
}

HomeScope::~HomeScope() {
  Home::present_ = former_;
  if (home_) home_->letGo();
}

}  // namespace Vesk
