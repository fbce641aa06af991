#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct evp_cipher_ctx_st;

namespace Macsec {

/// AES key wrap (RFC 3394), by the cryptographic provider, under one key encrypting key, which is
/// set once and wiped on destruction.
class KeyWrap {
 public:
  /// Octets that wrapping adds.
  static constexpr size_t kOverhead = 8;

  /// A KEK of 16 octets (AES-128) or 32 (AES-256); with any other nothing is wrapped or unwrapped.
  explicit KeyWrap(std::span<uint8_t const> kek);

  bool keyed() const { return wrapping_ && unwrapping_; }
  /// Wraps a key of 16 or 32 octets into 8 octets more. False, and `out` zero, for other sizes.
  [[nodiscard]] bool wrap(std::span<uint8_t const> key, std::span<uint8_t> out);
  /// The key in `wrapped`. False, and `out` zero, for other sizes and when the integrity check says
  /// that it was wrapped under another KEK or changed on its way.
  [[nodiscard]] bool unwrap(std::span<uint8_t const> wrapped, std::span<uint8_t> out);

 private:
  struct ContextFree {
    void operator()(evp_cipher_ctx_st* context) const;
  };
  using Context = std::unique_ptr<evp_cipher_ctx_st, ContextFree>;

  static Context newContext(std::span<uint8_t const> kek, bool wrapping);

  Context wrapping_;
  Context unwrapping_;
};

}  // namespace Macsec
