#pragma once

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "runtime/Text.h"

namespace Vesk::Test {

template <class T>
void makeOther(T& value);

/// Makes another value of the field with the given number, and counts the fields.
template <class T>
struct FieldChanger {
  T& value;
  int wanted;
  int fields = 0;
  std::string changed = {};

  template <class F>
  void operator()(char const* name, F T::*field) {
    if (fields++ != wanted) return;
    makeOther(value.*field);
    changed = name;
  }
};

/// Makes another value of the same type out of one: of a composite, by its last field.
template <class T>
void makeOther(T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    value = !value;
  } else if constexpr (std::is_integral_v<T>) {
    value = static_cast<T>(value ^ 1);
  } else if constexpr (IsNamedEnum<T>) {
    auto const& names = EnumNames<T>::names;
    value = names[0].first == value ? names[1].first : names[0].first;
  } else if constexpr (std::is_same_v<T, String8>) {
    value += "it's\\";
  } else if constexpr (std::is_same_v<T, Lumo::EthAddr>) {
    auto bytes = value.bytes();
    bytes[5] ^= 1;
    value = T(bytes);
  } else if constexpr (std::is_same_v<T, Lumo::IntfId>) {
    value = T(value.stringValue() + "x");
  } else {
    FieldChanger<T> counter{value, -1};
    T::describe(counter);
    T::describe(FieldChanger<T>{value, counter.fields - 1});
  }
}

/// For each field of a value type: a value that differs in it alone is unequal, prints differently,
/// and parses back from what it prints.
template <class T>
void expectEachFieldCounts(T const& value = T()) {
  T copy = value;
  EXPECT_TRUE(copy == value && !(copy != value));
  FieldChanger<T> counter{copy, -1};
  T::describe(counter);
  EXPECT_GT(counter.fields, 0);
  for (int i = 0; i < counter.fields; ++i) {
    T other = value;
    FieldChanger<T> changer{other, i};
    T::describe(changer);
    EXPECT_TRUE(other != value && !(other == value)) << changer.changed;
    EXPECT_NE(valueToStrep(other), valueToStrep(value)) << changer.changed;
    EXPECT_TRUE(valueFromStrep<T>(valueToStrep(other)) == other) << valueToStrep(other);
  }
}

}  // namespace Vesk::Test
