#include "runtime/Dir.h"

namespace Vesk {

Ptr<Entity> Dir::entry(Name const& name) const {
  Entry* entry = entityPtr_.find(name);
  return entry ? entry->entity() : nullptr;
}

void Dir::entityPtrIs(Ptr<Entity> const& entity) {
  if (!entity) {
    throwRangeException(
        "null _entityPtr parameter to mutator for Vesk::Dir::entityPtr not allowed\"");
  }
  Name const name = entity->name();
  if (entry(name) == entity) return;
  entityPtr_.xDel(name);
  entityPtr_.insert(make<Entry>(entity).ptr());
  entityPtrNotify(name);
}

Ptr<Entity> Dir::entityPtrDel(Name const& name) {
  Name const kept = name;
  Ptr<Entry> gone = entityPtr_.xDel(kept);
  if (!gone) return nullptr;
  entityPtrNotify(kept);
  return gone->entity();
}

void Dir::entityPtrDelAll() {
  for (Entry& entry : entityPtr_) entityPtrDel(entry.fwkKey());
}

void Dir::entityPtrNotify(Name const& name) {
  tellKey(kEntityPtr, Lumo::IntfId(), name, &NotifieeConst::onEntityPtr);
}

}  // namespace Vesk
