#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "host/state/StatePath.h"
#include "host/state/StateStore.h"
#include "model/MkaPeer.h"
#include "runtime/Describe.h"

namespace Macsecd {

/// A value that a store held and the tree couldn't take, or could only in part.
struct DroppedState {
  std::string path;
  std::string reason;
};

/// Puts the values of a store into a tree, one at a time, where the descriptions of its classes
/// have a place for them.
class Rebuilding {
 public:
  using Names = std::span<std::string const>;

  explicit Rebuilding(StateValues const& values) : values_(values) {}

  /// Puts all values in, in their order. Whatever they are, it doesn't throw.
  template <class E>
  void putAll(E& root) {
    for (auto const& [path, value] : values_) {
      begin(path, value);
      try {
        auto const names = statePathNames(path);
        put(root, "", names);
      } catch (std::exception const& e) {
        drop(e.what());
      }
    }
  }
  std::vector<DroppedState> dropped;
  /// What makes the store say what the tree says.
  StateChange repair;

  /// The present value goes to or below an entity that stands at `above`.
  template <class E>
  void put(E& entity, std::string const& above, Names names);
  std::string const& value() const { return *value_; }
  /// What is below an entity tells as well as its own entry that it is there.
  void entryIs(std::string const& path, std::string const& text);
  template <class P>
  std::optional<P> stored(std::string const& path) const;
  [[noreturn]] static void unknown();

 private:
  void begin(std::string const& path, std::string const& value) {
    path_ = &path;
    value_ = &value;
  }
  void drop(std::string reason);
  void told(std::string reason);

  StateValues const& values_;
  std::string const* path_ = nullptr;
  std::string const* value_ = nullptr;
};

namespace Detail {

using Vesk::Detail::AttributeVisitor;

// A member of a CA can be called nothing: that is what twelve zero octets say. Nothing else can.
template <class M>
constexpr bool mayBeNameless = std::is_same_v<M, Macsec::MkaPeer>;

// Where one collection lacks what a member was made of, another one of the same parent can have it:
// what is under one key is made of the same.
template <class P>
struct SiblingParameter : AttributeVisitor {
  SiblingParameter(Rebuilding const& from, std::string const& parent, std::string const& member)
      : rebuilding(from), above(parent), key(member) {}
  Rebuilding const& rebuilding;
  std::string const& above;
  std::string const& key;
  std::optional<P> found;

  template <class F, class M, class E, class A>
  void members(char const*, F, Vesk::Ptr<M> (E::*)(A)) {}
  template <class F, class M, class E, class A, class Q>
  void members(char const* name, F, Vesk::Ptr<M> (E::*)(A, Q)) {
    if constexpr (Vesk::IsValue<P> && std::is_same_v<std::remove_cvref_t<Q>, P>) {
      if (!found) found = rebuilding.stored<P>(statePath(statePath(above, name), key));
    }
  }
};

// Goes through the description of an entity to the one row that the names speak of.
template <class E>
struct Putting : AttributeVisitor {
  Putting(Rebuilding& from, E& to, std::string const& path, Rebuilding::Names rest)
      : rebuilding(from), entity(to), above(path), names(rest) {}
  Rebuilding& rebuilding;
  E& entity;
  std::string const& above;
  Rebuilding::Names names;
  bool done = false;

  AttributeVisitor ofProcess() { return {}; }

  bool isFor(char const* name, size_t least, size_t most) {
    bool const isIt = names[0] == name && names.size() >= least && names.size() <= most;
    done |= isIt;
    return isIt;
  }
  template <class T, class S>
  void value(char const* name, T E::*field, S setter) {
    if (!isFor(name, 1, 1)) return;
    (entity.*setter)(Vesk::valueFromStrep<T>(rebuilding.value(), entity.*field));
  }
  template <class K, class T, class S>
  void values(char const* name, Vesk::ValueMap<K, T> E::*, S setter) {
    if (!isFor(name, 2, 2)) return;
    (entity.*setter)(Vesk::valueFromPlainText<K>(names[1]),
                     Vesk::valueFromStrep<T>(rebuilding.value()));
  }
  // A value that says itself which key it has.
  template <class K, class T, class S, class G>
  void values(char const* name, Vesk::ValueMap<K, T> E::*, S setter, G key) {
    if (!isFor(name, 2, 2)) return;
    T const value = Vesk::valueFromStrep<T>(rebuilding.value());
    if (Vesk::plainText(Vesk::valueToStrep((value.*key)())) != names[1]) {
      throw std::invalid_argument("the value belongs to another key");
    }
    (entity.*setter)(value);
  }
  template <class M, class K, class Is>
  void members(char const* name, Vesk::HashMap<M, K> E::*field, Is is) {
    if (!isFor(name, 2, names.size())) return;
    if (names[1].empty() && !mayBeNameless<M>) Rebuilding::unknown();
    K const key = Vesk::valueFromPlainText<K>(names[1]);
    std::string const path = statePath(statePath(above, name), names[1]);
    Vesk::Ptr<M> member = (entity.*field)[key];
    if (!member) member = made(is, path, key);
    if (names.size() > 2) rebuilding.put(*member, path, names.subspan(2));
  }
  template <class F>
  void child(char const*, F) {
    static_assert(!std::is_same_v<F, F>, "no way to make an owned entity is described");
  }

 private:
  template <class M, class A, class K>
  Vesk::Ptr<M> made(Vesk::Ptr<M> (E::*is)(A), std::string const& path, K const& key) {
    rebuilding.entryIs(path, "+");
    return (entity.*is)(key);
  }
  template <class M, class A, class P, class K>
  Vesk::Ptr<M> made(Vesk::Ptr<M> (E::*is)(A, P), std::string const& path, K const& key) {
    auto const parameter = parameterAt<std::remove_cvref_t<P>>(path);
    rebuilding.entryIs(path, Vesk::valueToStrep(parameter));
    return (entity.*is)(key, parameter);
  }
  template <class P>
  P parameterAt(std::string const& path) {
    if (auto own = rebuilding.stored<P>(path)) return *own;
    SiblingParameter<P> sibling(rebuilding, above, names[1]);
    E::describe(sibling);
    if (sibling.found) return *sibling.found;
    throw std::invalid_argument("the parameters of its entity are missing or damaged");
  }
};

}  // namespace Detail

template <class E>
void Rebuilding::put(E& entity, std::string const& above, Names names) {
  Detail::Putting<E> putting(*this, entity, above, names);
  E::describe(putting);
  if (!putting.done) unknown();
}

template <class P>
std::optional<P> Rebuilding::stored(std::string const& path) const {
  auto const entry = values_.find(path);
  if (entry == values_.end()) return std::nullopt;
  try {
    return Vesk::valueFromStrep<P>(entry->second);
  } catch (std::exception const&) {
    return std::nullopt;
  }
}

}  // namespace Macsecd
