#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct evp_mac_ctx_st;

namespace Macsec {

/// AES-CMAC as the cryptographic provider itself has it, under one key that is set once.
class ProviderCmac {
 public:
  static constexpr size_t kSize = 16;

  /// Without a key: computes nothing.
  ProviderCmac() = default;
  /// Keyed by 16 octets (AES-128) or 32 (AES-256); by any other number it stays without a key.
  explicit ProviderCmac(std::span<uint8_t const> key);

  bool keyed() const { return context_ != nullptr; }
  /// False without a key, or when the provider refuses to work.
  [[nodiscard]] bool compute(std::span<uint8_t const> message, std::span<uint8_t, kSize> out);

 private:
  struct ContextFree {
    void operator()(evp_mac_ctx_st* context) const;
  };
  std::unique_ptr<evp_mac_ctx_st, ContextFree> context_;
};

}  // namespace Macsec
