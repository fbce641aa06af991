#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "runtime/NetValues.h"

namespace Macsec {

/// The word of a parameter set that holds several fields side by side: a value type that lies on
/// the bytes of a packet. A setter stores the low bits of its argument that the field has room for
/// and leaves all other bits as they are. `Part` is the class that names the fields.
template <class Part, class Word>
class BitPart {
 public:
  constexpr BitPart() = default;
  constexpr explicit BitPart(Word value) : word_(value) {}

  /// The whole word in host order.
  constexpr Word value() const { return word_.value(); }
  constexpr void valueIs(Word value) { word_.valueIs(value); }

  /// The two octets of a 16-bit word in the order of the frame.
  constexpr uint8_t v0() const requires(sizeof(Word) == 2) { return word_.bytes()[0]; }
  constexpr void v0Is(uint8_t v0) requires(sizeof(Word) == 2) { valueIs(join(v0, v1())); }
  constexpr uint8_t v1() const requires(sizeof(Word) == 2) { return word_.bytes()[1]; }
  constexpr void v1Is(uint8_t v1) requires(sizeof(Word) == 2) { valueIs(join(v0(), v1)); }

  friend constexpr bool operator==(Part const& a, Part const& b) { return a.value() == b.value(); }
  friend constexpr auto operator<=>(Part const& a, Part const& b) {
    return a.value() <=> b.value();
  }

 protected:
  /// The field that takes the bits from `high` down to `low`; bit 0 is the lowest.
  template <int high, int low>
  constexpr Word bits() const {
    return (value() & mask<high, low>()) >> low;
  }
  template <int high, int low>
  constexpr void bitsIs(unsigned field) {
    valueIs(static_cast<Word>((value() & ~mask<high, low>()) | (field << low & mask<high, low>())));
  }

 private:
  template <int high, int low>
  static constexpr unsigned mask() {
    static_assert(0 <= low && low <= high && high < 8 * static_cast<int>(sizeof(Word)));
    return ((1u << (high - low + 1)) - 1) << low;
  }
  static constexpr Word join(uint8_t v0, uint8_t v1) { return static_cast<Word>(v0 << 8 | v1); }

  Lumo::NetValue<Word> word_;
};

/// "Value('Macsec::<Type>', ** {'v0': <v0>, 'v1': <v1>})" and back; what isn't that text throws
/// `Vesk::ParseException`.
std::string wordToStrep(char const* typeName, uint8_t v0, uint8_t v1);
uint16_t wordFromStrep(char const* typeName, std::string_view text);
/// A decimal number from 0 to 255, or `Vesk::ParseException`.
uint8_t octetFromStrep(std::string_view text);
/// Writes the text to the stream.
std::ostream& strepTo(std::ostream& out, std::string const& text);

/// The printed form: a 16-bit part as a literal with its type's name, an 8-bit part as its number.
template <class Part>
std::string valueToStrep(BitPart<Part, uint16_t> const& part) {
  return wordToStrep(Part::typeName, part.v0(), part.v1());
}
template <class Part>
std::string valueToStrep(BitPart<Part, uint8_t> const& part) {
  return std::to_string(part.value());
}

/// The part whose printed form this is; any other text throws `Vesk::ParseException`.
template <class Part>
Part partFromStrep(std::string_view text) {
  if constexpr (sizeof(Part) == 2) {
    return Part(wordFromStrep(Part::typeName, text));
  } else {
    return Part(octetFromStrep(text));
  }
}

template <class Part, class Word>
std::ostream& operator<<(std::ostream& out, BitPart<Part, Word> const& part) {
  return strepTo(out, valueToStrep(part));
}

}  // namespace Macsec
