#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/AesChain.h"
#include "platform/ProviderCmac.h"
#include "platform/SecretOctets.h"

namespace Macsec {

/// AES-CMAC (RFC 4493) under one key. The key is set once; a computation costs little more than the
/// cipher does, and allocates nothing. What is kept of the key is wiped on destruction.
///
/// In FIPS mode the MAC is that of the provider, whose module is validated as a whole.
class AesCmac {
 public:
  static constexpr size_t kSize = AesChain::kBlock;

  /// Without a key: computes nothing.
  AesCmac() = default;
  /// Keyed by 16 octets (AES-128) or 32 (AES-256); by any other number it stays without a key.
  explicit AesCmac(std::span<uint8_t const> key);

  bool keyed() const { return chain_.keyed() || provider_.keyed(); }
  /// False without a key, or when the cryptographic provider refuses to work; `out` is then zero.
  [[nodiscard]] bool compute(std::span<uint8_t const> message, std::span<uint8_t, kSize> out);
  /// True if `mac` is the CMAC of the message, found out in constant time.
  [[nodiscard]] bool matches(std::span<uint8_t const> message, std::span<uint8_t const> mac);

 private:
  bool makeSubkeys();
  bool computeByChain(std::span<uint8_t const> message, std::span<uint8_t, kSize> out);
  size_t close(std::span<uint8_t> piece, size_t size) const;

  AesChain chain_;
  AesChain::Block wholeKey_;   // K1: closes a message of whole blocks
  AesChain::Block paddedKey_;  // K2: closes one that had to be padded
  ProviderCmac provider_;
};

}  // namespace Macsec
