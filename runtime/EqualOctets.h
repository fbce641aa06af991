#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Vesk {

/// Compares 4 to 16 octets in place, by their first and their last word: a call of the library
/// would cost more than that.
template <size_t N>
[[gnu::always_inline]] inline bool equalOctets(std::array<uint8_t, N> const& a,
                                               std::array<uint8_t, N> const& b) {
  static_assert(N >= 4 && N <= 16);
  constexpr size_t kWord = N < 8 ? 4 : 8;
  constexpr size_t kLast = N - kWord;
  return __builtin_memcmp(a.data(), b.data(), kWord) == 0 &&
         __builtin_memcmp(a.data() + kLast, b.data() + kLast, kWord) == 0;
}

}  // namespace Vesk
