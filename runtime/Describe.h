#pragma once

#include <string>
#include <string_view>

#include "runtime/Entity.h"
#include "runtime/Text.h"

namespace Vesk {

// An entity class describes its attributes once, in order of declaration:
//
//   template <class V> static void describe(V&& v) {
//     v.parameter("intfId", &IntfStatus::intfId_);               constructor parameter
//     v.value("key", &IntfStatus::key_, &IntfStatus::keyIs);     value, with its setter
//     v.derived("cipher", &IntfStatus::cipher);                  computed from others
//     v.values("rxSak", &CpStatus::rxSak_);                      collection of plain values
//     v.members("actorStatus", &MkaPortStatus::actorStatus_);    collection of entities
//     v.child("mkaInfo", &MkaMessageInfo::mkaInfo_);             one owned entity
//     v.reference("pkt", &Class::pkt_);                          pointer that isn't owned
//   }
//
// The attribute log, the text form, JSON and the parsing of a written value all come from it.

namespace Detail {

// What a walk over a description does with the kinds that it has no use for.
struct AttributeVisitor {
  template <class F>
  void parameter(char const*, F) {}
  template <class F, class S>
  void value(char const*, F, S) {}
  template <class G>
  void derived(char const*, G) {}
  template <class F>
  void values(char const*, F) {}
  template <class F>
  void members(char const*, F) {}
  template <class F>
  void child(char const*, F) {}
  template <class F>
  void reference(char const*, F) {}
};

template <class E>
struct AttributeFinder : AttributeVisitor {
  AttributeFinder(E const& entity, void const* at, std::string& value)
      : entity(entity), at(at), text(value) {}
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
  template <class F>
  void values(char const* attribute, F field) {
    found(attribute, field);
  }
  template <class F>
  void members(char const* attribute, F field) {
    found(attribute, field);
  }
  template <class F>
  void child(char const* attribute, F field) {
    if (found(attribute, field)) text = (entity.*field) ? "+" : "";
  }
};

template <class E>
struct AttributeWriter : AttributeVisitor {
  AttributeWriter(E& entity, std::string_view wanted, std::string_view text)
      : entity(entity), wanted(wanted), text(text) {}
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

}  // namespace Detail

/// Base of an entity class that describes itself.
template <class Self>
class DescribedEntity : public Entity {
 public:
  using Entity::Entity;

  char const* attributeAt(void const* field, std::string& value) const override {
    Detail::AttributeFinder<Self> finder(static_cast<Self const&>(*this), field, value);
    Self::describe(finder);
    return finder.name;
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
std::string entityToText(E const& entity, int depth = 0);

namespace Detail {

template <class E>
struct TextVisitor : AttributeVisitor {
  TextVisitor(E const& entity, int depth) : entity(entity), depth(depth) {}
  E const& entity;
  int depth;
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
  template <class F>
  void values(char const* name, F field) {
    for (auto& entry : entity.*field) {
      line(std::string(name) + "[" + valueToStrep(entry.fwkKey()) +
           "]: " + valueToStrep(entry.value()));
    }
  }
  template <class F>
  void members(char const* name, F field) {
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
std::string entityToText(E const& entity, int depth) {
  Detail::TextVisitor<E> visitor(entity, depth);
  E::describe(visitor);
  return visitor.out;
}

}  // namespace Vesk
