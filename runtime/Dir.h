#pragma once

#include "runtime/Describe.h"
#include "runtime/Reactor.h"

namespace Vesk {

/// An entity that holds named entities.
class Dir final : public DescribedEntity<Dir> {
 public:
  enum Attribute : uint8_t { kEntityPtr };

  class NotifieeConst : public NotifieeBase {
   public:
    virtual void onEntityPtr(Name const&) {}
    virtual void onEntityPtr() {}
    virtual void onEntityPtrImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Name>(kEntityPtr, &R::onEntityPtr, &R::onEntityPtrImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using EntityPtrMap = ValueMap<Name, Ptr<Entity>>;

  explicit Dir(Name const& name) : DescribedEntity(name) {}

  /// The entity of that name, or null.
  Ptr<Entity> entry(Name const& name) const;
  EntityPtrMap const& entityPtr() const { return entityPtr_; }
  Ptr<Entity> entityPtr(Name const& name) const { return entry(name); }
  /// Puts the entity in under its name; another one of that name is replaced, the same is nothing.
  void entityPtrIs(Ptr<Entity> const& entity);
  Ptr<Entity> entityPtrDel(Name const& name);
  void entityPtrDelAll();
  void entityPtrNotify(Name const& name);

  template <class V>
  static constexpr void describe(V&& v) {
    v.reference("entityPtr", &Dir::entityPtr_);
  }

 private:
  EntityPtrMap entityPtr_;
};

}  // namespace Vesk
