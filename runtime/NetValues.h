#pragma once

#include <array>
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
  constexpr Word value() const {
    Word w = 0;
    for (uint8_t byte : bytes_) w = static_cast<Word>(static_cast<uint64_t>(w) << 8 | byte);
    return w;
  }
  constexpr void valueIs(Word value) {
    for (size_t i = 0; i < sizeof(Word); ++i) {
      bytes_[i] = static_cast<uint8_t>(value >> 8 * (sizeof(Word) - 1 - i));
    }
  }
  /// The bytes in network order.
  constexpr uint8_t const* bytes() const { return bytes_.data(); }

  friend constexpr bool operator==(NetValue const&, NetValue const&) = default;
  friend constexpr auto operator<=>(NetValue const& a, NetValue const& b) {
    return a.value() <=> b.value();
  }

 private:
  std::array<uint8_t, sizeof(Word)> bytes_{};
};

using NetU8 = NetValue<uint8_t>;
using NetU16 = NetValue<uint16_t>;
using NetU32 = NetValue<uint32_t>;
using NetU64 = NetValue<uint64_t>;

static_assert(sizeof(NetU64) == 8 && alignof(NetU64) == 1);

}  // namespace Lumo
