#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct evp_cipher_ctx_st;

namespace Macsec {

/// AES-GCM (NIST SP 800-38D) under one key, with an IV of 12 octets and a whole ICV. What is kept
/// of the key is wiped on destruction.
class AesGcm {
 public:
  static constexpr size_t kIvSize = 12;
  static constexpr size_t kIcvSize = 16;
  using Iv = std::array<uint8_t, kIvSize>;

  /// Keyed by 16 octets (AES-128) or 32 (AES-256); by any other number it stays without a key.
  explicit AesGcm(std::span<uint8_t const> key);

  bool keyed() const { return context_ != nullptr; }
  /// Encrypts `text` in place; `icv` is then that of both. False without a key; the text is then
  /// zero.
  [[nodiscard]] bool seal(Iv const& iv, std::span<uint8_t const> clear, std::span<uint8_t> text,
                          std::span<uint8_t, kIcvSize> icv);
  /// Decrypts `text` in place. False if the ICV isn't theirs; the text is then zero.
  [[nodiscard]] bool open(Iv const& iv, std::span<uint8_t const> clear, std::span<uint8_t> text,
                          std::span<uint8_t const, kIcvSize> icv);

 private:
  bool pass(bool seals, Iv const& iv, std::span<uint8_t const> clear, std::span<uint8_t> text);

  struct ContextFree {
    void operator()(evp_cipher_ctx_st* context) const;
  };
  std::unique_ptr<evp_cipher_ctx_st, ContextFree> context_;
};

}  // namespace Macsec
