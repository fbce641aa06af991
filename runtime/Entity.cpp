#include "runtime/Entity.h"

namespace Vesk {

namespace {

uint64_t lastEntityId = 0;

// A follower may do what sets off handlers; who writes goes on in `tell`.
void tellWorld(AttributeWrite const& write) {
  RunningHandler outside(nullptr);
  if (world().attributeLog()) world().attributeWritten(write);
  // One that leaves while it is told, or has another one leave, keeps nobody else from hearing.
  auto const& present = world().attributeFollowers();
  for (AttributeFollower* follower : std::vector(present)) {
    if (std::ranges::find(present, follower) != present.end()) follower->attributeWritten(write);
  }
}

}  // namespace

void flushEntityLogOutputBuffer() {
  world().flushAttributes();
  for (AttributeFollower* follower : world().attributeFollowers()) follower->flushAttributes();
}

void Notifier::tellZeroReferences() {
  NotifieeListBase::doVisitAll(notifiees_.get(),
                               [](NotifieeBase& notifiee) { notifiee.onZeroReferences(); });
}

Entity::Entity(Name const& name) : name_(name), entityId_(++lastEntityId) {}

std::string Entity::fullName() const {
  std::string const own(name_.view());
  return parent_ ? parent_->fullName() + "/" + own : own;
}

void Entity::logWrite(uint8_t number, void const* field) const {
  std::string value;
  char const* const attribute = attributeAt(field, value);
  tellWorld(AttributeWrite{*this, number, attribute, std::string(), value});
}

void Entity::logMember(uint8_t number, void const* map, std::string const& key,
                       std::string const& value, Entity const* member) const {
  std::string ignored;
  char const* const attribute = attributeAt(map, ignored);
  tellWorld(AttributeWrite{*this, number, attribute, key, value, member});
}

}  // namespace Vesk
