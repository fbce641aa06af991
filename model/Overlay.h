#pragma once

#include <cstdint>
#include <type_traits>

namespace Macsec {

/// An overlay: nothing but its fields, one behind the other, which may lie on any octet of a
/// packet.
template <class T, unsigned size>
constexpr bool isOverlay = sizeof(T) == size && alignof(T) == 1 &&
                           std::is_standard_layout_v<T>&& std::is_trivially_copyable_v<
                               T>&& std::is_trivially_destructible_v<T>;

/// The overlay on the octets at `data`. The caller has made sure that so many octets are there.
template <class T>
T* overlayOn(uint8_t* data) {
  static_assert(isOverlay<T, sizeof(T)>);
  return reinterpret_cast<T*>(data);
}
template <class T>
T const* overlayOn(uint8_t const* data) {
  static_assert(isOverlay<T, sizeof(T)>);
  return reinterpret_cast<T const*>(data);
}

}  // namespace Macsec
