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
  std::erase_if(cmacs_, [](auto const& entry) { return entry.second.expired(); });
  return made;
}

size_t SharedCmacs::members() const {
  return static_cast<size_t>(
      std::ranges::count_if(cmacs_, [](auto const& entry) { return !entry.second.expired(); }));
}

}  // namespace Macsec
