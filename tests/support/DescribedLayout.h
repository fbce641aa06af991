#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "runtime/Describe.h"
#include "runtime/Text.h"

namespace Vesk::Test {

/// Where the described fields of an object lie, in the order in which they are described.
struct DescribedLayout {
  struct Field {
    std::string name;
    size_t offset;
    size_t size;
    size_t alignment;
  };
  std::vector<Field> fields;

  DescribedLayout inOrderOfPlace() const {
    DescribedLayout layout = *this;
    std::ranges::sort(layout.fields, {}, &Field::offset);
    return layout;
  }
  /// Empty if the fields cover the object from `begin` to `size` without an undescribed one between
  /// them: each starts where the one before ends, rounded up to its own alignment. Else the place
  /// of the first gap. What hides in the padding, the tidy test finds.
  std::string gap(size_t begin, size_t size, size_t alignment) const {
    size_t end = begin;
    std::string after = "the base";
    for (Field const& field : fields) {
      if (field.offset != roundedUp(end, field.alignment)) {
        return "something undescribed, or out of order, between " + after + " and " + field.name;
      }
      end = field.offset + field.size;
      after = field.name;
    }
    return roundedUp(end, alignment) == size ? "" : "something undescribed after " + after;
  }

 private:
  static size_t roundedUp(size_t n, size_t to) { return (n + to - 1) / to * to; }
};

namespace Detail {

// Takes down where each field of an object lies. The same walker serves values and entities.
template <class T>
struct LayoutVisitor : Vesk::Detail::AttributeVisitor {
  explicit LayoutVisitor(T const& of) : object(of) {}
  T const& object;
  DescribedLayout layout;

  template <class F>
  void add(char const* name, F T::*field) {
    auto const* at = reinterpret_cast<std::byte const*>(&(object.*field));
    auto const offset = static_cast<size_t>(at - reinterpret_cast<std::byte const*>(&object));
    layout.fields.push_back({name, offset, sizeof(F), alignof(F)});
  }
  template <class F>
  void operator()(char const* name, F T::*field) {
    add(name, field);
  }
  template <class F>
  void parameter(char const* name, F T::*field) {
    add(name, field);
  }
  template <class F, class S>
  void value(char const* name, F T::*field, S) {
    add(name, field);
  }
  template <class F, class... How>
  void values(char const* name, F T::*field, How...) {
    add(name, field);
  }
  template <class F, class... How>
  void members(char const* name, F T::*field, How...) {
    add(name, field);
  }
  template <class F>
  void child(char const* name, F T::*field) {
    add(name, field);
  }
  template <class F>
  void reference(char const* name, F T::*field) {
    add(name, field);
  }
};

}  // namespace Detail

template <class T>
DescribedLayout layoutOf(T const& object) {
  Detail::LayoutVisitor<T> visitor(object);
  T::describe(visitor);
  return visitor.layout;
}

/// Fails unless every field of the value type is described, in order of declaration.
template <class T>
void expectEveryFieldDescribed(T const& value = T()) {
  static_assert(IsValue<T>);
  EXPECT_EQ(layoutOf(value).gap(0, sizeof(T), alignof(T)), "") << T::kTypeName;
}

/// Fails unless every attribute of the entity's class is described, in whatever order they lie. For
/// a class that derives from another described one, `Base` is that one.
template <class E, class Base = DescribedEntity<E>>
void expectEveryAttributeDescribed(E const& entity) {
  EXPECT_EQ(layoutOf(entity).inOrderOfPlace().gap(sizeof(Base), sizeof(E), alignof(E)), "")
      << entity.fullName() << ", a " << typeid(E).name();
}

}  // namespace Vesk::Test
