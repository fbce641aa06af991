#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct evp_mac_ctx_st;

namespace Macsec {

/// AES-CMAC (RFC 4493) under one key. The key is set once; a computation starts from the keyed
/// state and allocates nothing. What OpenSSL keeps of the key is wiped on destruction.
class AesCmac {
 public:
  static constexpr size_t kSize = 16;

  /// Without a key: computes nothing.
  AesCmac() = default;
  /// Keyed by 16 octets (AES-128) or 32 (AES-256); by any other number it stays without a key.
  explicit AesCmac(std::span<uint8_t const> key);

  bool keyed() const { return context_ != nullptr; }
  /// False without a key, or when the cryptographic provider refuses to work; `out` is then zero.
  [[nodiscard]] bool compute(std::span<uint8_t const> message, std::span<uint8_t, kSize> out);
  /// True if `mac` is the CMAC of the message, found out in constant time.
  [[nodiscard]] bool matches(std::span<uint8_t const> message, std::span<uint8_t const> mac);

 private:
  struct ContextFree {
    void operator()(evp_mac_ctx_st* context) const;
  };
  std::unique_ptr<evp_mac_ctx_st, ContextFree> context_;
};

}  // namespace Macsec
