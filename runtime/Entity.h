#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "runtime/Exceptions.h"
#include "runtime/HashMap.h"
#include "runtime/Homes.h"
#include "runtime/Notifiee.h"
#include "runtime/Text.h"
#include "runtime/ValueMap.h"
#include "runtime/World.h"

namespace Vesk {

class Entity;

/// One effective write as it goes to the attribute log of the world.
struct AttributeWrite {
  Entity const& entity;
  /// The number of the attribute in the class of the entity, and its name.
  uint8_t number;
  char const* attribute;
  /// Printed form of the key of the member concerned; empty for what is no collection.
  std::string const& key;
  /// Printed form of the new value; empty for a member that was taken out.
  std::string const& value;
  /// The entity that has come into a collection; null for all else.
  Entity const* member = nullptr;

  /// The entity, if it is an `E` and this one of these attributes; else null.
  template <class E>
  E const* of(std::initializer_list<typename E::Attribute> attributes) const;
};

/// Follows the attribute log of one world, beside where the world itself puts it. It is called as a
/// write is stored and before any reactor hears of it.
class AttributeFollower {
 public:
  virtual void attributeWritten(AttributeWrite const& write) = 0;
  /// Pushes out what it still holds.
  virtual void flushAttributes() {}

 protected:
  AttributeFollower() = default;
  ~AttributeFollower() = default;
};

/// Pushes out what the attribute log still holds, so that a process about to end leaves its
/// deletions in the tree.
void flushEntityLogOutputBuffer();

/// Something whose attributes can be watched. An attribute is stored first and told afterwards; an
/// equal write is silent; a notification carries no value.
class Notifier : public HashMapEntry {
 public:
  /// Where reactors register.
  NotifieeListBase& notifieeList() {
    if (!notifiees_) notifiees_ = std::make_unique<NotifieeListBase>(watched_);
    return *notifiees_;
  }
  size_t notifiees() const { return notifiees_ ? notifiees_->notifiees() : 0; }

 protected:
  Notifier() = default;
  ~Notifier() override = default;

  void tellZeroReferences() override;

  /// Calls `on` of each notifiee that watches the attribute; those with a key only if it is `intf`.
  template <class N>
  void tell(uint8_t attribute, Lumo::IntfId intf, void (N::*on)()) {
    if (!isWatched(attribute)) return;
    NotifieeListBase::doVisit(notifiees_.get(), attribute, intf,
                              [on](NotifieeBase& notifiee) { (static_cast<N&>(notifiee).*on)(); });
  }
  /// The same for a member of a collection, with its key: which interface it concerns is told by
  /// the key itself.
  template <class N, class K>
  void tellKey(uint8_t attribute, K const& key, void (N::*on)(K const&)) {
    if (isWatched(attribute)) tellKept(attribute, K(key), on);
  }
  /// Whether a notifiee watches the attribute, or has done so.
  bool isWatched(uint8_t attribute) const { return (watched_ >> attribute & 1) != 0; }

 private:
  // The key is a copy: the one given may lie in something that a handler destroys.
  template <class N, class K>
  void tellKept(uint8_t attribute, K const& key, void (N::*on)(K const&)) {
    NotifieeListBase::doVisit(
        notifiees_.get(), attribute, interfaceOf(key),
        [&](NotifieeBase& notifiee) { (static_cast<N&>(notifiee).*on)(key); });
  }
  static Lumo::IntfId interfaceOf(Lumo::IntfId key) { return key; }
  template <class K>
  static Lumo::IntfId interfaceOf(K const&) {
    return Lumo::IntfId();
  }

  Watch watched_ = 0;
  std::unique_ptr<NotifieeListBase> notifiees_;
};

/// The place of one optional entity that another owns; it has no parent any more when that one
/// ends.
template <class E>
class Child {
 public:
  Child() = default;
  ~Child() { leaveParent(); }
  Child(Child const&) = delete;
  Child& operator=(Child const&) = delete;

  Ptr<E> const& ptr() const { return entity_; }
  E* operator->() const { return entity_.ptr(); }
  E& operator*() const { return *entity_; }
  explicit operator bool() const { return static_cast<bool>(entity_); }
  void entityIs(Ptr<E> entity, Entity* parent) {
    leaveParent();
    entity_ = std::move(entity);
    if (entity_) entity_->parentIs(parent);
  }

 private:
  void leaveParent() {
    if (entity_) entity_->parentIs(nullptr);
  }
  Ptr<E> entity_;
};

/// A named, counted object of a tree. The services below are what its accessors are made of.
class Entity : public Notifier {
 public:
  /// Where an entity stands in its parent: the collection, and its key there as plain text.
  struct Place {
    char const* collection;
    std::string key;
  };

  Name const& name() const { return name_; }
  Entity* parent() const { return parent_; }
  void parentIs(Entity* parent) { parent_ = parent; }
  /// The names from the root down, with slashes between.
  std::string fullName() const;
  /// A number that no other entity of this process has or had.
  uint64_t entityId() const { return entityId_; }

  /// Finds the attribute that is stored at `field`: its name, and its value in text form.
  virtual char const* attributeAt(void const* field, std::string& value) const {
    static_cast<void>(field), static_cast<void>(value);
    return "?";
  }
  /// Where this has the other entity; nothing if it hasn't.
  virtual std::optional<Place> placeOf(Entity const& member) const {
    static_cast<void>(member);
    return std::nullopt;
  }
  /// Whether the attribute outlives the process: whether it is described, and not as one that says
  /// what this process has done.
  virtual bool outlivesProcess(std::string_view attribute) const {
    static_cast<void>(attribute);
    return false;
  }
  /// The constructor parameters behind the first, which is the key, in text form; "+" if there are
  /// none.
  virtual std::string parametersText() const { return "+"; }

 protected:
  explicit Entity(Name const& name);
  ~Entity() override = default;

  /// Value attribute: stores and tells, unless the value is the one that stands there.
  template <class T, class V, class N>
  void write(uint8_t attribute, T& field, V&& value, void (N::*on)()) {
    writeKeyed(attribute, Lumo::IntfId(), field, std::forward<V>(value), on);
  }
  /// The same for a change that concerns one interface.
  template <class T, class V, class N>
  void writeKeyed(uint8_t attribute, Lumo::IntfId key, T& field, V&& value, void (N::*on)()) {
    static_assert(std::is_same_v<T, std::remove_cvref_t<V>>);
    if (field == value) return;
    field = std::forward<V>(value);
    if (Detail::switches->writesAreLogged) [[unlikely]]
      logWrite(attribute, &field);
    tell(attribute, key, on);
  }

  /// Collection of entities: get or create, by `create(key)`.
  template <class E, class K, class Create, class N>
  Ptr<E> memberIs(uint8_t attribute, HashMap<E, K>& map, K const& key, Create create,
                  void (N::*on)(K const&)) {
    if (Ptr<E> member = map[key]) return member;
    Ptr<E> member;
    {
      KeyedHomeScope<K> const scope(key);
      member = create();
    }
    if (!member) throwRangeException("null ValidPtr");
    member->parentIs(this);
    map.insert(member.ptr());
    memberChanged(attribute, &map, key, "+", on, member.ptr());
    return member;
  }
  template <class E, class K, class N>
  Ptr<E> memberDel(uint8_t attribute, HashMap<E, K>& map, K const& key, void (N::*on)(K const&)) {
    K const kept = key;
    Ptr<E> member = map.xDel(kept);
    if (!member) return nullptr;
    member->parentIs(nullptr);
    memberChanged(attribute, &map, kept, "", on);
    return member;
  }
  template <class E, class K, class N>
  void memberDelAll(uint8_t attribute, HashMap<E, K>& map, void (N::*on)(K const&)) {
    for (E& member : map) memberDel(attribute, map, K(member.fwkKey()), on);
  }

  /// One optional entity: puts another in the place, or none, and tells.
  template <class E, class N>
  void childIs(uint8_t attribute, Child<E>& child, Ptr<E> const& another, void (N::*on)()) {
    if (child.ptr() == another) return;
    child.entityIs(another, this);
    if (Detail::switches->writesAreLogged) [[unlikely]]
      logWrite(attribute, &child);
    tell(attribute, Lumo::IntfId(), on);
  }

  /// Collection of plain values.
  template <class K, class T, class N>
  void valueIs(uint8_t attribute, ValueMap<K, T>& map, K const& key, T const& value,
               void (N::*on)(K const&)) {
    if (!map.xIs(key, value)) return;
    memberChanged(attribute, &map, key, value, on);
  }
  template <class K, class T, class N>
  void valueDel(uint8_t attribute, ValueMap<K, T>& map, K const& key, void (N::*on)(K const&)) {
    K const kept = key;
    if (!map.xDel(kept)) return;
    memberChanged(attribute, &map, kept, "", on);
  }
  template <class K, class T, class N>
  void valueDelAll(uint8_t attribute, ValueMap<K, T>& map, void (N::*on)(K const&)) {
    if (!isWatched(attribute) && !Detail::switches->writesAreLogged) return map.clear();
    // The walk has gone on before a value is taken out, so that the map can keep its memory.
    for (auto i = map.iterator(); i;) {
      K const key(i->fwkKey());
      ++i;
      valueDel(attribute, map, key, on);
    }
  }

  /// Logs and tells that the member under `key` came, went or changed.
  template <class K, class T, class N>
  void memberChanged(uint8_t attribute, void const* map, K const& key, T const& value,
                     void (N::*on)(K const&), Entity const* member = nullptr) {
    if (Detail::switches->writesAreLogged) [[unlikely]] {
      if constexpr (std::is_convertible_v<T, char const*>) {
        logMember(attribute, map, valueToStrep(key), value, member);
      } else {
        logMember(attribute, map, valueToStrep(key), valueToStrep(value), member);
      }
    }
    tellKey(attribute, key, on);
  }

  void logWrite(uint8_t number, void const* field) const;
  void logMember(uint8_t number, void const* map, std::string const& key, std::string const& value,
                 Entity const* member) const;

 private:
  Name name_;
  Entity* parent_ = nullptr;
  uint64_t entityId_;
};

template <class E>
E const* AttributeWrite::of(std::initializer_list<typename E::Attribute> attributes) const {
  static_assert(std::is_final_v<E>);
  // Comparing types costs more: names, where each library has its own.
  bool const isOne =
      std::ranges::find(attributes, number) != attributes.end() && typeid(entity) == typeid(E);
  return isOne ? static_cast<E const*>(&entity) : nullptr;
}

/// Throws what a get-or-create throws when the member that stands differs in a constructor
/// parameter.
template <class T>
void requireSameParameter(Name const& name, char const* attribute, T const& given,
                          T const& current) {
  if (given == current) return;
  throwNameInUseException("Reinstantiating the entity with name " + std::string(name.view()) +
                          " where constructor parameter attribute _" + attribute +
                          " has a different value of " + valueToStrep(given) +
                          " than the current value of " + valueToStrep(current) + " not allowed");
}

}  // namespace Vesk
