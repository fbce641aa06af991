#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Macsec {

/// The name of a CAK as it goes on the wire: up to 32 octets.
class CknOctets {
 public:
  static constexpr size_t kMaxSize = 32;
  /// Octets of a name that take part in a key derivation.
  static constexpr size_t kIdentifierSize = 16;

  /// A text of an even number of hexadecimal digits, at most 64, stands for the octets that it
  /// spells; any other for its characters, of which 32 count.
  explicit CknOctets(std::string_view text);
  /// Whether a text is of the first kind.
  static bool standsForOctets(std::string_view text);

  std::span<uint8_t const> octets() const { return {octets_.data(), size_}; }
  size_t size() const { return size_; }
  /// The first 16 octets, with zeros behind a shorter name: the key identifier in the derivation of
  /// KEK and ICK (IEEE 802.1X-2010 9.3.3).
  std::span<uint8_t const, kIdentifierSize> identifier() const {
    return std::span(octets_).first<kIdentifierSize>();
  }

  friend bool operator==(CknOctets const& a, CknOctets const& b) {
    return a.size_ == b.size_ &&
           __builtin_memcmp(a.octets_.data(), b.octets_.data(), kMaxSize) == 0;
  }

 private:
  std::array<uint8_t, kMaxSize> octets_{};  // zeros behind the name
  size_t size_ = 0;
};

}  // namespace Macsec
