#pragma once

#include <compare>
#include <cstdint>
#include <type_traits>

#include "runtime/Text.h"

namespace Macsec {

/// Two octets in the order of the frame; they print as "v0" and "v1" of a literal.
template <class Part>
class BitWord : public Vesk::Value<Part> {
 public:
  constexpr BitWord() = default;
  constexpr explicit BitWord(uint16_t value) { valueIs(value); }

  /// The whole word in host order.
  constexpr uint16_t value() const { return static_cast<uint16_t>(v0_ << 8 | v1_); }
  constexpr void valueIs(uint16_t value) {
    v0_ = static_cast<uint8_t>(value >> 8);
    v1_ = static_cast<uint8_t>(value);
  }
  constexpr uint8_t v0() const { return v0_; }
  constexpr void v0Is(uint8_t v0) { v0_ = v0; }
  constexpr uint8_t v1() const { return v1_; }
  constexpr void v1Is(uint8_t v1) { v1_ = v1; }

  template <class V>
  static void describe(V&& v) {
    v("v0", static_cast<uint8_t Part::*>(&BitWord::v0_));
    v("v1", static_cast<uint8_t Part::*>(&BitWord::v1_));
  }

 private:
  uint8_t v0_ = 0;
  uint8_t v1_ = 0;
};

/// One octet; it prints as its number.
template <class Part>
class BitOctet : public Vesk::Value<Part> {
 public:
  static constexpr bool kPrintsBare = true;

  constexpr BitOctet() = default;
  constexpr explicit BitOctet(uint8_t value) : value_(value) {}
  /// Throws `Vesk::RangeException` above 255.
  static Part fromNumber(uint64_t number) {
    if (number > 255)
      Vesk::throwRangeException(std::string(Part::kTypeName) + " > 255 not allowed");
    return Part(static_cast<uint8_t>(number));
  }

  constexpr uint8_t value() const { return value_; }
  constexpr void valueIs(uint8_t value) { value_ = value; }
  uint64_t number() const { return value_; }

  template <class V>
  static void describe(V&& v) {
    v("value", static_cast<uint8_t Part::*>(&BitOctet::value_));
  }

 private:
  uint8_t value_ = 0;
};

/// The octet or word of a parameter set that holds several fields side by side: a value type that
/// lies on the bytes of a packet. A setter stores the low bits of its argument that the field has
/// room for and leaves all other bits as they are. `Part` is the class that names the fields.
template <class Part, class Word>
class BitPart : public std::conditional_t<sizeof(Word) == 2, BitWord<Part>, BitOctet<Part>> {
  using Base = std::conditional_t<sizeof(Word) == 2, BitWord<Part>, BitOctet<Part>>;

 public:
  using Base::Base;

  friend constexpr bool operator==(Part const& a, Part const& b) { return a.value() == b.value(); }
  friend constexpr auto operator<=>(Part const& a, Part const& b) {
    return a.value() <=> b.value();
  }

 protected:
  /// The field that takes the bits from `high` down to `low`; bit 0 is the lowest.
  template <int high, int low>
  constexpr Word bits() const {
    return static_cast<Word>((this->value() & mask<high, low>()) >> low);
  }
  template <int high, int low>
  constexpr void bitsIs(unsigned field) {
    unsigned const others = this->value() & ~mask<high, low>();
    this->valueIs(static_cast<Word>(others | (field << low & mask<high, low>())));
  }

 private:
  template <int high, int low>
  static constexpr unsigned mask() {
    static_assert(0 <= low && low <= high && high < 8 * static_cast<int>(sizeof(Word)));
    return ((1u << (high - low + 1)) - 1) << low;
  }
};

}  // namespace Macsec
