#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/SecretOctets.h"

namespace Macsec {

/// AES key wrap (RFC 3394), by the cryptographic provider, under one key encrypting key, which is
/// wiped on destruction. A cipher lasts for one key: wrapping is rare, and its context is large.
class KeyWrap {
 public:
  /// Octets that wrapping adds.
  static constexpr size_t kOverhead = 8;

  /// A KEK of 16 octets (AES-128) or 32 (AES-256); with any other nothing is wrapped or unwrapped.
  explicit KeyWrap(std::span<uint8_t const> kek);

  bool keyed() const { return kek_.size() > 0; }
  /// Wraps a key of 16 or 32 octets into 8 octets more. False, and `out` zero, for other sizes.
  [[nodiscard]] bool wrap(std::span<uint8_t const> key, std::span<uint8_t> out) const;
  /// The key in `wrapped`. False, and `out` zero, for other sizes and when the integrity check says
  /// that it was wrapped under another KEK or changed on its way.
  [[nodiscard]] bool unwrap(std::span<uint8_t const> wrapped, std::span<uint8_t> out) const;

 private:
  SecretOctets<32> kek_;
};

}  // namespace Macsec
