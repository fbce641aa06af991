#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string_view>

#include "runtime/EqualOctets.h"
#include "runtime/String8.h"

namespace Lumo {

/// A 6-byte MAC address, ordered as the number that its bytes make.
class EthAddr {
 public:
  constexpr EthAddr() = default;
  constexpr explicit EthAddr(std::array<uint8_t, 6> const& bytes) : bytes_(bytes) {}
  /// Six pairs of hexadecimal digits with colons between; nothing for any other text.
  static std::optional<EthAddr> parsed(std::string_view text);

  constexpr std::array<uint8_t, 6> const& bytes() const { return bytes_; }
  /// Lower case, with colons: "02:00:00:00:00:01".
  Vesk::String8 stringValue() const;
  uint32_t hash() const { return Vesk::hashBytes(bytes_.data(), bytes_.size()); }

  friend bool operator==(EthAddr const& a, EthAddr const& b) {
    return Vesk::equalOctets(a.bytes_, b.bytes_);
  }
  friend constexpr auto operator<=>(EthAddr const&, EthAddr const&) = default;

 private:
  std::array<uint8_t, 6> bytes_{};
};

static_assert(sizeof(EthAddr) == 6 && alignof(EthAddr) == 1);

std::ostream& operator<<(std::ostream& out, EthAddr const& addr);

}  // namespace Lumo
