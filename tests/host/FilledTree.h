#pragma once

#include "host/state/StatePath.h"
#include "host/state/StateTree.h"
#include "model/Factories.h"
#include "runtime/Describe.h"

namespace Macsecd {

/// Makes a value another one, field by field, as its description says.
struct Changer {
  int number = 1;

  template <class T>
  void change(T& value) {
    ++number;
    if constexpr (std::is_same_v<T, bool>) {
      value = !value;
    } else if constexpr (Vesk::IsNamedEnum<T>) {
      auto const& names = Vesk::EnumNames<T>::names;
      for (auto const& [other, name] : names) {
        if (other != value) return void(value = other);
      }
    } else if constexpr (std::is_arithmetic_v<T>) {
      value = static_cast<T>(value + static_cast<T>(number % 3 + 1));
    } else if constexpr (std::is_same_v<T, Vesk::String8>) {
      value = Vesk::String8("it's 50% \\ of a/b #" + std::to_string(number));
    } else if constexpr (std::is_same_v<T, Lumo::IntfId>) {
      value = Lumo::IntfId("Ethernet2/2");
    } else if constexpr (std::is_same_v<T, Lumo::EthAddr>) {
      value = Lumo::EthAddr({2, 1, 2, 3, 4, static_cast<uint8_t>(number)});
    } else {
      auto const field = [&](char const*, auto pointer) { change(value.*pointer); };
      T::describe(field);
    }
  }
};

/// Writes another value into every value attribute of an entity.
template <class E>
struct Filler : Vesk::Detail::AttributeVisitor {
  Filler(E& to, Changer& with) : entity(to), changer(with) {}
  E& entity;
  Changer& changer;
  Vesk::Detail::AttributeVisitor ofProcess() { return {}; }
  template <class T, class S>
  void value(char const*, T E::*field, S setter) {
    T changed = entity.*field;
    changer.change(changed);
    (entity.*setter)(changed);
  }
};

template <class E>
void fill(E& entity, Changer& changer) {
  Filler<E> filler(entity, changer);
  E::describe(filler);
}

inline void fillInterface(Macsec::Status& status, Lumo::IntfId intfId, Changer& changer) {
  Macsec::MacsecParams const params(Macsec::CipherSuite::gcmAesXpn256, true);
  fill(*status.intfStatusIs(intfId, params), changer);
  auto const cpStatus = status.cpStatusIs(intfId, params);
  fill(*cpStatus, changer);
  for (uint8_t an : std::initializer_list<uint8_t>{0, 3}) {
    Macsec::Sak sak;
    changer.change(sak);
    sak.anIs(Macsec::AssociationNumber(an));
    cpStatus->rxSakIs(sak);
    cpStatus->rxLPNIs(Macsec::RxLPN(7, sak.an()));
  }
  auto const port = status.portStatusIs(intfId);
  fill(*port, changer);
  for (char const* ckn : {"ab", "c/d 'e' %", "\x01\xff"}) {
    auto const actor = port->actorStatusIs(ckn);
    fill(*actor, changer);
    for (char const* id : {"111111111111111111111111", "222222222222222222222222"}) {
      fill(*actor->livePeerIs(id), changer);
      fill(*actor->potentialPeerIs(id), changer);
    }
  }
}

/// A tree in which every attribute but `fipsStatus` stands at another value than its default.
inline void fillTree(Macsec::Status& status) {
  Changer changer;
  fill(status, changer);
  fillInterface(status, Lumo::IntfId("Ethernet1"), changer);
  fillInterface(status, Lumo::IntfId("Ethernet1/1"), changer);
}

/// All attributes of a tree by path, from the descriptions of its classes.
template <class E>
struct Flattener : Vesk::Detail::AttributeVisitor {
  Flattener(E const& of, std::string at, StateValues& values)
      : entity(of), path(std::move(at)), out(values) {}
  E const& entity;
  std::string path;
  StateValues& out;

  Vesk::Detail::AttributeVisitor ofProcess() { return {}; }
  template <class T, class S>
  void value(char const* name, T E::*field, S) {
    out[statePath(path, name)] = Vesk::valueToStrep(entity.*field);
  }
  template <class F, class... How>
  void values(char const* name, F field, How...) {
    for (auto& entry : entity.*field) {
      out[statePath(statePath(path, name), Vesk::valueToStrep(entry.fwkKey()))] =
          Vesk::valueToStrep(entry.value());
    }
  }
  template <class F, class... How>
  void members(char const* name, F field, How...);
};

template <class E>
void flatten(E const& entity, std::string const& path, StateValues& out) {
  Flattener<E> flattener(entity, path, out);
  E::describe(flattener);
  if (!path.empty()) out[path] = entity.parametersText();
}

template <class E>
template <class F, class... How>
void Flattener<E>::members(char const* name, F field, How...) {
  for (auto& member : entity.*field) {
    flatten(member, statePath(statePath(path, name), member.name().view()), out);
  }
}

inline StateValues flattened(Macsec::Status const& status) {
  StateValues out;
  flatten(status, "", out);
  return out;
}

}  // namespace Macsecd
