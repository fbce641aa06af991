#pragma once

#include <array>
#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>

namespace Lumo {

/// An unsigned integer held in network byte order, with no alignment of its own, so that it can lie
/// on the bytes of a packet.
template <class Word>
class NetValue {
 public:
  constexpr NetValue() = default;
  constexpr NetValue(Word value) { valueIs(value); }

  /// The value in host order.
  constexpr Word value() const { return swapped(std::bit_cast<Word>(bytes_)); }
  constexpr void valueIs(Word value) { bytes_ = std::bit_cast<Bytes>(swapped(value)); }
  /// The bytes in network order.
  constexpr uint8_t const* bytes() const { return bytes_.data(); }

  friend constexpr bool operator==(NetValue const&, NetValue const&) = default;
  friend constexpr auto operator<=>(NetValue const& a, NetValue const& b) {
    return a.value() <=> b.value();
  }

 private:
  using Bytes = std::array<uint8_t, sizeof(Word)>;

  // Between host and network order.
  static constexpr Word swapped(Word w) {
    if constexpr (std::endian::native == std::endian::big || sizeof w == 1) {
      return w;
    } else if constexpr (sizeof w == 2) {
      return __builtin_bswap16(w);
    } else if constexpr (sizeof w == 4) {
      return __builtin_bswap32(w);
    } else {
      static_assert(sizeof w == 8);
      return __builtin_bswap64(w);
    }
  }

  Bytes bytes_{};
};

using NetU8 = NetValue<uint8_t>;
using NetU16 = NetValue<uint16_t>;
using NetU32 = NetValue<uint32_t>;
using NetU64 = NetValue<uint64_t>;

static_assert(sizeof(NetU64) == 8 && alignof(NetU64) == 1);

}  // namespace Lumo
