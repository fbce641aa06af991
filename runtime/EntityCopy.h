#pragma once

#include "runtime/Describe.h"

namespace Vesk {

/// Writes what one entity and all below it have into another of its class, as the class describes
/// itself. References aren't copied.
template <class E>
void copyEntity(E const& from, E& to);

namespace Detail {

// Finds the constructor parameter behind the key.
template <class P>
struct ParameterFinder : AttributeVisitor {
  explicit ParameterFinder(Entity const& in) : entity(in) {}
  Entity const& entity;
  P const* found = nullptr;

  template <class T, class E>
  void parameter(char const*, T E::*field) {
    if constexpr (std::is_same_v<std::remove_const_t<T>, P>) {
      found = &(static_cast<E const&>(entity).*field);
    }
  }
};

template <class E, class M, class A>
Ptr<M> memberLike(E& to, M const& member, Ptr<M> (E::*is)(A)) {
  return (to.*is)(member.fwkKey());
}
template <class E, class M, class A, class P>
Ptr<M> memberLike(E& to, M const& member, Ptr<M> (E::*is)(A, P)) {
  ParameterFinder<std::remove_cvref_t<P>> parameter(member);
  M::describe(parameter);
  VESK_ASSERT_NAMED(parameter.found, "the class describes what its members are made of");
  return (to.*is)(member.fwkKey(), *parameter.found);
}

template <class E>
struct Copier : AttributeVisitor {
  Copier(E const& source, E& copy) : from(source), to(copy) {}
  E const& from;
  E& to;

  template <class T, class S>
  void value(char const*, T E::*field, S setter) {
    (to.*setter)(from.*field);
  }
  template <class F, class S>
  void values(char const*, F field, S setter) {
    for (auto& entry : from.*field) (to.*setter)(entry.fwkKey(), entry.value());
  }
  template <class F, class S, class G>
  void values(char const*, F field, S setter, G) {
    for (auto& entry : from.*field) (to.*setter)(entry.value());
  }
  template <class F, class Is>
  void members(char const*, F field, Is is) {
    for (auto const& member : from.*field) copyEntity(member, *memberLike(to, member, is));
  }
  template <class F>
  void child(char const*, F) {
    static_assert(!std::is_same_v<F, F>, "no way to copy an owned entity is described");
  }
};

}  // namespace Detail

template <class E>
void copyEntity(E const& from, E& to) {
  Detail::Copier<E> copier(from, to);
  E::describe(copier);
}

}  // namespace Vesk
