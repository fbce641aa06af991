#pragma once

#include <array>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "runtime/Entity.h"

namespace Vesk {

namespace Detail {

// The handlers of the type `On` that a notifiee class lists, by the numbers of their attributes.
template <class On>
struct HandlerTable {
  std::array<On, 32> handlers{};
  std::array<bool, 32> hasRow{};

  template <class A>
  constexpr void value(uint8_t number, void (A::*on)()) {
    take(number, on);
  }
  template <class K, class A, class B>
  constexpr void collection(uint8_t number, void (A::*on)(K const&), void (B::*)()) {
    take(number, on);
  }
  template <class F>
  constexpr void take(uint8_t number, F on) {
    if constexpr (std::is_same_v<F, On>) {
      handlers[number] = on;
      hasRow[number] = true;
    }
  }
};

template <class N, class On>
constexpr HandlerTable<On> handlerTable() {
  HandlerTable<On> table;
  N::template handlers<N>(table);
  return table;
}
template <class N, class On>
inline constexpr HandlerTable<On> kHandlers = handlerTable<N, On>();

template <class N, class On, uint8_t kNumber>
constexpr On handlerOf() {
  static_assert(kHandlers<N, On>.hasRow[kNumber], "handlers() has a row of this kind for it");
  return kHandlers<N, On>.handlers[kNumber];
}

// The kinds of the attributes of a class, in the order in which something lists them.
struct AttributeKinds {
  enum Kind : uint8_t { kValue, kCollection, kReference };
  std::array<Kind, 40> kinds{};
  uint8_t size = 0;
  constexpr void add(Kind kind) { kinds[size++] = kind; }
};

struct HandlerKinds : AttributeKinds {
  bool areInOrder = true;
  constexpr void row(uint8_t number, Kind kind) {
    areInOrder = areInOrder && number == size;
    add(kind);
  }
  template <class A>
  constexpr void value(uint8_t number, void (A::*)()) {
    row(number, kValue);
  }
  template <class K, class A, class B>
  constexpr void collection(uint8_t number, void (A::*)(K const&), void (B::*)()) {
    row(number, kCollection);
  }
};

struct DescribedKinds : AttributeKinds {
  template <class F>
  constexpr void parameter(char const*, F) {}
  template <class G>
  constexpr void derived(char const*, G) {}
  template <class F, class S>
  constexpr void value(char const*, F, S) {
    add(kValue);
  }
  template <class F>
  constexpr void child(char const*, F) {
    add(kValue);
  }
  template <class F, class... How>
  constexpr void values(char const*, F, How...) {
    add(kCollection);
  }
  template <class F, class... How>
  constexpr void members(char const*, F, How...) {
    add(kCollection);
  }
  template <class F>
  constexpr void reference(char const*, F) {
    add(kReference);
  }
};

// What a class describes are the attributes that its notifiee class has handlers for, in the order
// of their numbers. Only references may stand before them that nobody can watch.
template <class E>
constexpr bool describesWhatItTells() {
  HandlerKinds told;
  E::NotifieeConst::template handlers<typename E::NotifieeConst>(told);
  DescribedKinds described;
  E::describe(described);
  if (!told.areInOrder || described.size < told.size) return false;
  uint8_t const before = described.size - told.size;
  for (uint8_t i = 0; i < described.size; ++i) {
    auto const kind = described.kinds[i];
    if (kind != DescribedKinds::kReference && (i < before || kind != told.kinds[i - before])) {
      return false;
    }
  }
  return true;
}

}  // namespace Detail

/// Gives an entity class the services of `Entity` by the number of an attribute alone, which names
/// its handler as well: `write<kSpeed>(speed_, v)`.
template <class Self>
class Attributes : public Entity {
 protected:
  using Entity::Entity;

  template <auto kAttribute, class T, class V>
  void write(T& field, V&& value) {
    Entity::write(kAttribute, field, std::forward<V>(value), onValue<kAttribute>());
  }
  template <auto kAttribute, class T, class V>
  void writeKeyed(Lumo::IntfId key, T& field, V&& value) {
    Entity::writeKeyed(kAttribute, key, field, std::forward<V>(value), onValue<kAttribute>());
  }
  template <auto kAttribute, class E, class K, class Create>
  Ptr<E> memberIs(HashMap<E, K>& map, K const& key, Create create) {
    return Entity::memberIs(kAttribute, map, key, create, onMember<kAttribute, K>());
  }
  template <auto kAttribute, class E, class K>
  Ptr<E> memberDel(HashMap<E, K>& map, K const& key) {
    return Entity::memberDel(kAttribute, map, key, onMember<kAttribute, K>());
  }
  template <auto kAttribute, class E, class K>
  void memberDelAll(HashMap<E, K>& map) {
    Entity::memberDelAll(kAttribute, map, onMember<kAttribute, K>());
  }
  template <auto kAttribute, class E>
  void childIs(Child<E>& child, Ptr<E> const& another) {
    Entity::childIs(kAttribute, child, another, onValue<kAttribute>());
  }
  template <auto kAttribute, class K, class T>
  void valueIs(ValueMap<K, T>& map, K const& key, T const& value) {
    Entity::valueIs(kAttribute, map, key, value, onMember<kAttribute, K>());
  }
  template <auto kAttribute, class K, class T>
  void valueDel(ValueMap<K, T>& map, K const& key) {
    Entity::valueDel(kAttribute, map, key, onMember<kAttribute, K>());
  }
  template <auto kAttribute, class K, class T>
  void valueDelAll(ValueMap<K, T>& map) {
    Entity::valueDelAll(kAttribute, map, onMember<kAttribute, K>());
  }
  template <auto kAttribute, class K, class T>
  void memberChanged(void const* map, K const& key, T const& value,
                     Entity const* member = nullptr) {
    Entity::memberChanged(kAttribute, map, key, value, onMember<kAttribute, K>(), member);
  }
  template <auto kAttribute, class K>
  void tellKey(K const& key) {
    Notifier::tellKey(kAttribute, key, onMember<kAttribute, K>());
  }

 private:
  template <auto kAttribute>
  static constexpr auto onValue() {
    using N = typename Self::NotifieeConst;
    return Detail::handlerOf<N, void (N::*)(), kAttribute>();
  }
  template <auto kAttribute, class K>
  static constexpr auto onMember() {
    using N = typename Self::NotifieeConst;
    return Detail::handlerOf<N, void (N::*)(K const&), kAttribute>();
  }
};

}  // namespace Vesk
