#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/SecretOctets.h"

struct evp_cipher_ctx_st;

namespace Macsec {

/// AES in cipher block chaining from an IV of zeros, without padding, under one key that is set
/// once. What is kept of the key is wiped on destruction.
///
/// The cipher goes on from the block that it gave last. A chain starts anew by adding that block to
/// the first of its own: this costs nothing, and setting an IV as much as several blocks.
class AesChain {
 public:
  static constexpr size_t kBlock = 16;
  using Block = SecretOctets<kBlock>;

  /// Without a key: encrypts nothing.
  AesChain() = default;
  /// Keyed by 16 octets (AES-128) or 32 (AES-256); by any other number it stays without a key.
  explicit AesChain(std::span<uint8_t const> key);

  bool keyed() const { return context_ != nullptr; }
  /// Encrypts whole blocks in place: the first ones of a chain, or those that follow. False without
  /// a key, or when the cryptographic provider refuses to work: then a chain has to start.
  [[nodiscard]] bool start(std::span<uint8_t> blocks);
  [[nodiscard]] bool goOn(std::span<uint8_t> blocks);

 private:
  bool resume();

  struct ContextFree {
    void operator()(evp_cipher_ctx_st* context) const;
  };
  std::unique_ptr<evp_cipher_ctx_st, ContextFree> context_;
  /// The block that the cipher goes on from; empty when that isn't known.
  Block last_;
};

/// Adds a block to another, bit by bit: exclusive or.
void addBlock(std::span<uint8_t const, AesChain::kBlock> addend,
              std::span<uint8_t, AesChain::kBlock> sum);

}  // namespace Macsec
