#pragma once

#include <string>
#include <string_view>

#include "runtime/Attributes.h"
#include "runtime/Text.h"

namespace Vesk {

// An entity class describes its attributes once, in order of declaration, which is that of their
// numbers:
//
//   template <class V> static constexpr void describe(V&& v) {
//     v.parameter("intfId", &Port::intfId_);             constructor parameter; the first: the key
//     v.value("speed", &Port::speed_, &Port::speedIs);   value, with its setter
//     v.derived("cipher", &Port::cipher);                computed from others
//     v.values("note", &Port::note_, &Port::noteIs);     plain values, by (key, value)
//     v.values("rxSak", &Port::rxSak_, &Port::rxSakIs, &Sak::an);   each tells its key itself
//     v.members("lane", &Port::lane_, &Port::laneIs);    entities, made by key or (key, parameter)
//     v.child("mkaInfo", &Port::mkaInfo_);               one owned entity
//     v.reference("pkt", &Port::pkt_);                   pointer that isn't owned
//     Vesk::ofProcess(v).value(...);                     says what this process has done
//   }
//
// The attribute log, the text form, the parsing of a written value, paths, copies, and what is kept
// for the next process all come from it. Whoever watches a tree goes by the numbers of attributes
// (`AttributeWrite::of`).

/// Who goes through what is described next, where it doesn't outlive the process: the visitor
/// itself, or what its own `ofProcess` gives.
template <class V>
constexpr decltype(auto) ofProcess(V& visitor) {
  if constexpr (requires { visitor.ofProcess(); }) {
    return visitor.ofProcess();
  } else {
    return (visitor);
  }
}

namespace Detail {

// What a walk over a description does with the kinds that it has no use for.
struct AttributeVisitor {
  template <class F>
  void parameter(char const*, F) {}
  template <class F, class S>
  void value(char const*, F, S) {}
  template <class G>
  void derived(char const*, G) {}
  template <class F, class... How>
  void values(char const*, F, How...) {}
  template <class F, class... How>
  void members(char const*, F, How...) {}
  template <class F>
  void child(char const*, F) {}
  template <class F>
  void reference(char const*, F) {}
};

template <class E>
struct AttributeFinder : AttributeVisitor {
  AttributeFinder(E const& in, void const* field, std::string& value)
      : entity(in), at(field), text(value) {}
  E const& entity;
  void const* at;
  std::string& text;
  char const* name = "?";

  template <class F>
  bool found(char const* attribute, F E::*field) {
    if (&(entity.*field) != at) return false;
    name = attribute;
    return true;
  }
  template <class T, class S>
  void value(char const* attribute, T E::*field, S) {
    if (found(attribute, field)) appendText(text, entity.*field);
  }
  template <class F, class... How>
  void values(char const* attribute, F field, How...) {
    found(attribute, field);
  }
  template <class F, class... How>
  void members(char const* attribute, F field, How...) {
    found(attribute, field);
  }
  template <class F>
  void child(char const* attribute, F field) {
    if (found(attribute, field)) text = (entity.*field) ? "+" : "";
  }
};

template <class E>
struct AttributeWriter : AttributeVisitor {
  AttributeWriter(E& to, std::string_view attribute, std::string_view value)
      : entity(to), wanted(attribute), text(value) {}
  E& entity;
  std::string_view wanted;
  std::string_view text;
  bool written = false;

  template <class T, class S>
  void value(char const* attribute, T E::*field, S setter) {
    if (wanted != attribute) return;
    (entity.*setter)(valueFromStrep<T>(text, entity.*field));
    written = true;
  }
};

template <class E>
struct PlaceFinder : AttributeVisitor {
  PlaceFinder(E const& in, Entity const& member) : entity(in), wanted(member) {}
  E const& entity;
  Entity const& wanted;
  std::optional<Entity::Place> place;

  template <class M, class K, class Is>
  void members(char const* name, HashMap<M, K> E::*field, Is) {
    if (place || typeid(wanted) != typeid(M)) return;
    K const key(static_cast<M const&>(wanted).fwkKey());
    if ((entity.*field).find(key) == &wanted) place = {name, plainText(valueToStrep(key))};
  }
};

struct LastingFinder : AttributeVisitor {
  explicit LastingFinder(std::string_view attribute) : wanted(attribute) {}
  std::string_view wanted;
  bool found = false;

  AttributeVisitor ofProcess() { return {}; }
  template <class F, class S>
  void value(char const* name, F, S) {
    found |= wanted == name;
  }
  template <class F, class... How>
  void values(char const* name, F, How...) {
    found |= wanted == name;
  }
  template <class F, class... How>
  void members(char const* name, F, How...) {
    found |= wanted == name;
  }
};

template <class E>
struct ParameterPrinter : AttributeVisitor {
  explicit ParameterPrinter(E const& of) : entity(of) {}
  E const& entity;
  std::string text;
  bool isKey = true;

  template <class T>
  void parameter(char const*, T E::*field) {
    if (std::exchange(isKey, false)) return;
    if (!text.empty()) text += ' ';
    appendText(text, entity.*field);
  }
};

}  // namespace Detail

/// Base of an entity class that describes itself.
template <class Self>
class DescribedEntity : public Attributes<Self> {
 public:
  using Attributes<Self>::Attributes;

  char const* attributeAt(void const* field, std::string& value) const override {
    if constexpr (requires { typename Self::NotifieeConst; }) {
      static_assert(Detail::describesWhatItTells<Self>(),
                    "handlers() and describe() have the attributes in the order of their numbers");
    }
    Detail::AttributeFinder<Self> finder(static_cast<Self const&>(*this), field, value);
    Self::describe(finder);
    return finder.name;
  }
  std::optional<Entity::Place> placeOf(Entity const& member) const override {
    Detail::PlaceFinder<Self> finder(static_cast<Self const&>(*this), member);
    Self::describe(finder);
    return std::move(finder.place);
  }
  bool outlivesProcess(std::string_view attribute) const override {
    Detail::LastingFinder finder(attribute);
    Self::describe(finder);
    return finder.found;
  }
  std::string parametersText() const override {
    Detail::ParameterPrinter<Self> printer(static_cast<Self const&>(*this));
    Self::describe(printer);
    return printer.text.empty() ? Entity::parametersText() : printer.text;
  }
};

/// Writes a value attribute from its printed form, through its setter. False if the class has no
/// value attribute of that name. Throws `ParseException` for a text that isn't such a value.
template <class E>
bool attributeFromText(E& entity, std::string_view attribute, std::string_view text) {
  Detail::AttributeWriter<E> writer(entity, attribute, text);
  E::describe(writer);
  return writer.written;
}

/// The attributes of an entity and of all that it holds, a line each, indented by depth.
template <class E>
std::string entityToText(E const& entity, size_t depth = 0);

namespace Detail {

template <class E>
struct TextVisitor : AttributeVisitor {
  TextVisitor(E const& of, size_t indented) : entity(of), depth(indented) {}
  E const& entity;
  size_t depth;
  std::string out;

  void line(std::string const& text) { out += std::string(2 * depth, ' ') + text + "\n"; }
  template <class T>
  void parameter(char const* name, T E::*field) {
    line(std::string(name) + ": " + valueToStrep(entity.*field));
  }
  template <class T, class S>
  void value(char const* name, T E::*field, S) {
    line(std::string(name) + ": " + valueToStrep(entity.*field));
  }
  template <class F, class... How>
  void values(char const* name, F field, How...) {
    for (auto& entry : entity.*field) {
      line(std::string(name) + "[" + valueToStrep(entry.fwkKey()) +
           "]: " + valueToStrep(entry.value()));
    }
  }
  template <class F, class... How>
  void members(char const* name, F field, How...) {
    for (auto& member : entity.*field) {
      line(std::string(name) + "[" + valueToStrep(member.fwkKey()) + "]:");
      out += entityToText(member, depth + 1);
    }
  }
  template <class F>
  void child(char const* name, F field) {
    if (!(entity.*field)) return;
    line(std::string(name) + ":");
    out += entityToText(*(entity.*field), depth + 1);
  }
};

}  // namespace Detail

template <class E>
std::string entityToText(E const& entity, size_t depth) {
  Detail::TextVisitor<E> visitor(entity, depth);
  E::describe(visitor);
  return visitor.out;
}

}  // namespace Vesk
