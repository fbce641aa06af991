#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include "platform/Hex.h"

namespace Macsec {

/// Overwrites octets in a way that no compiler leaves out.
void wipe(std::span<uint8_t> octets);
/// Compares in a time that depends on the sizes alone.
bool equalInConstantTime(std::span<uint8_t const> a, std::span<uint8_t const> b);

/// Up to `Capacity` octets on the stack, wiped when they go out of scope: what a clear key lives in
/// between its text and the cipher.
template <size_t Capacity>
class SecretOctets {
 public:
  SecretOctets() = default;
  SecretOctets(SecretOctets const&) = delete;
  SecretOctets& operator=(SecretOctets const&) = delete;
  SecretOctets(SecretOctets&& from) noexcept { *this = std::move(from); }
  /// What stood here goes with `from`.
  SecretOctets& operator=(SecretOctets&& from) noexcept {
    octets_.swap(from.octets_);
    std::swap(size_, from.size_);
    std::swap(used_, from.used_);
    return *this;
  }
  ~SecretOctets() {
    if (used_ > 0) wipe(std::span(octets_).first(used_));
  }

  size_t size() const { return size_; }
  /// Only the first `Capacity` octets count.
  void sizeIs(size_t size) {
    size_ = size < Capacity ? size : Capacity;
    if (used_ < size_) used_ = size_;
  }
  std::span<uint8_t> octets() { return {octets_.data(), size_}; }
  std::span<uint8_t const> octets() const { return {octets_.data(), size_}; }

  /// Takes the octets that a hexadecimal text stands for. False, and empty, for a text that isn't
  /// one or is too long.
  [[nodiscard]] bool hexIs(std::string_view text) {
    sizeIs(text.size() / 2);
    if (text.size() <= 2 * Capacity && hexDecode(text, octets())) return true;
    sizeIs(0);
    return false;
  }

 private:
  std::array<uint8_t, Capacity> octets_{};
  size_t size_ = 0;
  size_t used_ = 0;  // the largest size so far
};

}  // namespace Macsec
