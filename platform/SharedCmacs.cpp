#include "platform/SharedCmacs.h"

#include <algorithm>
#include <utility>

#include "runtime/World.h"

namespace Macsec {

std::shared_ptr<AesCmac> SharedCmacs::cmac(std::span<uint8_t const> key) {
  auto made = std::make_shared<AesCmac>(key);
  if (!made->keyed() || !Vesk::hasWorld()) return made;
  return Vesk::world().kept<SharedCmacs>().shared(std::move(made));
}

std::shared_ptr<AesCmac> SharedCmacs::shared(std::shared_ptr<AesCmac> made) {
  Mark mark;
  if (!made->compute({}, mark)) return made;
  std::weak_ptr<AesCmac>& known = cmacs_[mark];
  if (auto held = known.lock()) return held;
  known = made;
  if (cmacs_.size() >= 2 * afterSweep_) sweep();
  return made;
}

// What has gone is looked for when there are twice as many as the last time: a walk over all for
// each new key would cost thousands of keys their square.
void SharedCmacs::sweep() {
  std::erase_if(cmacs_, [](auto const& entry) { return entry.second.expired(); });
  afterSweep_ = std::max(cmacs_.size(), size_t{8});
}

size_t SharedCmacs::members() const {
  return static_cast<size_t>(
      std::ranges::count_if(cmacs_, [](auto const& entry) { return !entry.second.expired(); }));
}

}  // namespace Macsec
