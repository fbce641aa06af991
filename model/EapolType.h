#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Macsec {

/// The packet type of an EAPOL frame, 0 to 8. Any other throws `Vesk::RangeException`.
class EapolType {
 public:
  /// The type of an MKPDU.
  static constexpr uint8_t eapMka = 5;
  static constexpr uint8_t max = 8;

  EapolType() = default;
  explicit EapolType(uint8_t type) { typeIs(type); }
  /// Reads what `valueToStrep` writes; any other text throws `Vesk::ParseException`.
  static EapolType parsed(std::string_view text);

  uint8_t type() const { return type_; }
  void typeIs(uint8_t type);

  friend bool operator==(EapolType const&, EapolType const&) = default;

 private:
  uint8_t type_ = 0;
};

/// The bare number.
std::string valueToStrep(EapolType const& type);
std::ostream& operator<<(std::ostream& out, EapolType const& type);

}  // namespace Macsec
