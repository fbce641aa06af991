#pragma once

#include <concepts>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "runtime/EthAddr.h"
#include "runtime/Exceptions.h"
#include "runtime/IntfId.h"
#include "runtime/String8.h"

namespace Vesk {

/// Base of the value types: plain copyable structures of attributes. A value type `T` has
///   static constexpr char const* kTypeName  ("Macsec::Cak"), and
///   template <class V> static void describe(V&& v)  that calls v("field", &T::field_) in order,
/// and from that one description is printed, parsed back, turned into JSON and logged. One that has
/// `kPrintsBare` prints as its single number.
template <class Self>
class Value {
 public:
  /// Whether it equals what `Self()` gives, by which most types say that there is nothing.
  bool isDefault() const {
    static Self const blank;
    return static_cast<Self const&>(*this) == blank;
  }
  friend bool operator==(Value const&, Value const&) { return true; }
};

template <class T>
concept IsValue = std::derived_from<T, Value<T>>;

/// The names of an enumeration, in the order of declaration: each has a specialization with a
/// `static constexpr std::pair<E, char const*> names[]`.
template <class E>
struct EnumNames;

template <class E>
concept IsNamedEnum = std::is_enum_v<E> && requires {
  EnumNames<E>::names;
};

/// The name of an enumerator; "?" for a number that has none.
template <IsNamedEnum E>
char const* stringValue(E e) {
  for (auto const& [value, name] : EnumNames<E>::names) {
    if (value == e) return name;
  }
  return "?";
}
/// The enumerator with this number. Throws `RangeException` for a number that has none.
template <IsNamedEnum E>
E enumFromNumber(uint64_t number) {
  for (auto const& [value, name] : EnumNames<E>::names) {
    if (static_cast<uint64_t>(value) == number) return value;
  }
  throwRangeException("no enumerator has the number " + std::to_string(number));
}
/// The enumerator with this name. Throws `RangeException` for a name that none has.
template <IsNamedEnum E>
E enumFromName(std::string_view wanted) {
  for (auto const& [value, name] : EnumNames<E>::names) {
    if (name == wanted) return value;
  }
  throwRangeException("no enumerator has the name " + std::string(wanted));
}

void appendQuoted(std::string& out, std::string_view text);
void appendDouble(std::string& out, double value);

/// Reads printed values. Throws `ParseException` with the place where the text isn't as expected.
class TextParser {
 public:
  explicit TextParser(std::string_view text) : text_(text) {}

  void expect(std::string_view literal);
  void expectEnd();
  bool boolean();
  uint64_t number(uint64_t max);
  /// A number of any size; one over 64 bits is the largest, for a range check to refuse.
  uint64_t anyNumber();
  double real();
  std::string quoted();
  std::string word();
  [[noreturn]] void fail(std::string const& wanted) const;

 private:
  std::string_view text_;
  size_t at_ = 0;
};

template <class T>
void appendText(std::string& out, T const& value);
template <class T>
void parseText(TextParser& parser, T& value);

namespace Detail {

template <class T>
struct FieldPrinter {
  std::string& out;
  T const& value;
  char const* separator = "";

  template <class F>
  void operator()(char const* name, F T::*field) {
    out += separator;
    out += '\'';
    out += name;
    out += "': ";
    appendText(out, value.*field);
    separator = ", ";
  }
};

template <class T>
struct FieldParser {
  TextParser& parser;
  T& value;
  char const* separator = "";

  template <class F>
  void operator()(char const* name, F T::*field) {
    parser.expect(separator);
    parser.expect(std::string("'") + name + "': ");
    parseText(parser, value.*field);
    separator = ", ";
  }
};

template <class T>
constexpr bool printsBare = requires {
  T::kPrintsBare;
};

}  // namespace Detail

template <class T>
void appendText(std::string& out, T const& value) {
  if constexpr (std::is_same_v<T, bool>) {
    out += value ? "True" : "False";
  } else if constexpr (IsNamedEnum<T>) {
    out += stringValue(value);
  } else if constexpr (std::is_integral_v<T>) {
    out += std::to_string(value);
  } else if constexpr (std::is_floating_point_v<T>) {
    appendDouble(out, value);
  } else if constexpr (std::is_same_v<T, String8>) {
    appendQuoted(out, value.view());
  } else if constexpr (std::is_same_v<T, Lumo::IntfId> || std::is_same_v<T, Lumo::EthAddr>) {
    appendQuoted(out, value.stringValue().view());
  } else if constexpr (Detail::printsBare<T>) {
    out += std::to_string(value.number());
  } else {
    static_assert(IsValue<T>, "a type that prints has to describe itself");
    out += "Value('";
    out += T::kTypeName;
    out += "', ** {";
    T::describe(Detail::FieldPrinter<T>{out, value});
    out += "})";
  }
}

template <class T>
void parseText(TextParser& parser, T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    value = parser.boolean();
  } else if constexpr (IsNamedEnum<T>) {
    value = enumFromName<T>(parser.word());
  } else if constexpr (std::is_integral_v<T>) {
    value = static_cast<T>(parser.number(static_cast<T>(~T{0})));
  } else if constexpr (std::is_floating_point_v<T>) {
    value = parser.real();
  } else if constexpr (std::is_same_v<T, String8>) {
    value = String8(parser.quoted());
  } else if constexpr (std::is_same_v<T, Lumo::IntfId>) {
    value = Lumo::IntfId(String8(parser.quoted()));
  } else if constexpr (std::is_same_v<T, Lumo::EthAddr>) {
    auto addr = Lumo::EthAddr::parsed(parser.quoted());
    if (!addr) parser.fail("a MAC address");
    value = *addr;
  } else if constexpr (Detail::printsBare<T>) {
    value = T::fromNumber(parser.anyNumber());
  } else {
    static_assert(IsValue<T>, "a type that parses has to describe itself");
    parser.expect(std::string("Value('") + T::kTypeName + "', ** {");
    T::describe(Detail::FieldParser<T>{parser, value});
    parser.expect("})");
  }
}

/// The printed form of a value, the same that `operator<<` writes.
template <class T>
std::string valueToStrep(T const& value) {
  std::string out;
  appendText(out, value);
  return out;
}

/// The value that a printed form stands for. `initial` gives a type without a default constructor
/// something to start from. Throws `ParseException`, or the value's own range exception.
template <class T>
T valueFromStrep(std::string_view text, T initial = T()) {
  TextParser parser(text);
  parseText(parser, initial);
  parser.expectEnd();
  return initial;
}

/// A printed value as it stands alone: a text without its quotes, all else as it is printed.
inline std::string plainText(std::string const& printed) {
  return printed.starts_with('\'') ? TextParser(printed).quoted() : printed;
}
/// The value that a plain text stands for.
template <class T>
T valueFromPlainText(std::string_view text) {
  if constexpr (std::is_constructible_v<T, String8>) {
    return T(String8(text));
  } else {
    return valueFromStrep<T>(text);
  }
}

std::ostream& writeText(std::ostream& out, std::string const& text);

/// Writes to a stream as text; integers of one byte are numbers, too.
template <class T>
void streamText(std::ostream& out, T const& value) {
  if constexpr (std::is_same_v<T, uint8_t> || std::is_same_v<T, int8_t>) {
    writeText(out, std::to_string(value));
  } else {
    out << value;
  }
}

template <class Self>
std::ostream& operator<<(std::ostream& out, Value<Self> const& value) {
  return writeText(out, valueToStrep(static_cast<Self const&>(value)));
}

}  // namespace Vesk
