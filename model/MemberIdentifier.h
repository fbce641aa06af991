#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string_view>

#include "runtime/EqualOctets.h"
#include "runtime/String8.h"

namespace Macsec {

/// The 96 random bits by which a member of a CA is known, as they lie in a frame. Everywhere else a
/// member identifier is its text; twelve zero octets are the empty text.
class MemberIdentifier {
 public:
  constexpr MemberIdentifier() = default;
  constexpr explicit MemberIdentifier(std::array<uint8_t, 12> const& bytes) : bytes_(bytes) {}
  /// Of 24 hexadecimal digits, or of the empty text; nothing for any other.
  static std::optional<MemberIdentifier> parsed(std::string_view text);

  constexpr std::array<uint8_t, 12> const& bytes() const { return bytes_; }
  /// 24 lower-case digits, or the empty text for zeros.
  Vesk::String8 stringValue() const;

  friend bool operator==(MemberIdentifier const& a, MemberIdentifier const& b) {
    return Vesk::equalOctets(a.bytes_, b.bytes_);
  }
  friend constexpr auto operator<=>(MemberIdentifier const&, MemberIdentifier const&) = default;

 private:
  std::array<uint8_t, 12> bytes_{};
};

static_assert(sizeof(MemberIdentifier) == 12 && alignof(MemberIdentifier) == 1);

std::ostream& operator<<(std::ostream& out, MemberIdentifier const& identifier);

}  // namespace Macsec
