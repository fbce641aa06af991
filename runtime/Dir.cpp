#include "runtime/Dir.h"

namespace Vesk {

Ptr<Entity> Dir::entry(Name const& name) const {
  Ptr<Entity> const* entity = entityPtr_[name];
  return entity ? *entity : nullptr;
}

void Dir::entityPtrIs(Ptr<Entity> const& entity) {
  if (!entity) {
    throwRangeException(
        "null _entityPtr parameter to mutator for Vesk::Dir::entityPtr not allowed\"");
  }
  Name const name = entity->name();
  if (entityPtr_.xIs(name, entity)) entityPtrNotify(name);
}

Ptr<Entity> Dir::entityPtrDel(Name const& name) {
  Name const kept = name;
  Ptr<Entity> gone = entry(kept);
  if (entityPtr_.xDel(kept)) entityPtrNotify(kept);
  return gone;
}

void Dir::entityPtrDelAll() {
  for (auto& entry : entityPtr_) entityPtrDel(entry.fwkKey());
}

void Dir::entityPtrNotify(Name const& name) { tellKey<kEntityPtr>(name); }

}  // namespace Vesk
