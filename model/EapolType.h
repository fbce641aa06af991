#pragma once

#include <cstdint>

#include "runtime/Text.h"

namespace Macsec {

/// The packet type of an EAPOL frame, 0 to 8. Any other throws `Vesk::RangeException`.
class EapolType : public Vesk::Value<EapolType> {
 public:
  /// The type of an MKPDU.
  static constexpr uint8_t eapMka = 5;
  static constexpr uint8_t max = 8;

  EapolType() = default;
  explicit EapolType(uint64_t type) : type_(checked(type)) {}

  uint8_t type() const { return type_; }
  void typeIs(uint64_t type) { type_ = checked(type); }

  friend bool operator==(EapolType const&, EapolType const&) = default;

  static constexpr char const* kTypeName = "Macsec::EapolType";
  static constexpr bool kPrintsBare = true;
  uint64_t number() const { return type_; }
  static EapolType fromNumber(uint64_t number) { return EapolType(number); }
  template <class V>
  static void describe(V&& v) {
    v("type", &EapolType::type_);
  }

 private:
  static uint8_t checked(uint64_t type) {
    if (type > max) Vesk::throwRangeException("EapolType::type < 0 or > 8 not allowed");
    return static_cast<uint8_t>(type);
  }

  uint8_t type_ = 0;
};

}  // namespace Macsec
