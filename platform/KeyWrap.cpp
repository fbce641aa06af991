#include "platform/KeyWrap.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <algorithm>

#include "platform/SecretOctets.h"

namespace Macsec {

namespace {

bool isKeySize(size_t size) { return size == 16 || size == 32; }

/// One pass of the cipher over `in`.
bool passed(EVP_CIPHER_CTX* context, std::span<uint8_t const> in, std::span<uint8_t> out) {
  int size = 0;
  if (EVP_CipherInit_ex2(context, nullptr, nullptr, nullptr, -1, nullptr) == 1 &&
      EVP_CipherUpdate(context, out.data(), &size, in.data(), static_cast<int>(in.size())) == 1 &&
      static_cast<size_t>(size) == out.size()) {
    return true;
  }
  ERR_clear_error();
  wipe(out);
  return false;
}

constexpr size_t kHalf = 8;
constexpr uint8_t kCheckOctet = 0xa6;
constexpr int kRounds = 6;

/// The index-based unwrapping of RFC 3394 2.2.2, block by block. OpenSSL's own allocates when the
/// integrity check fails, and anybody can send what fails it. `out` holds the halves R[1] to R[n],
/// `block` A and the half in work.
bool unwrapBlocks(EVP_CIPHER_CTX* aes, std::span<uint8_t, 2 * kHalf> block,
                  std::span<uint8_t> out) {
  size_t const halves = out.size() / kHalf;
  for (int round = kRounds; round-- > 0;) {
    for (size_t i = halves; i > 0; --i) {
      auto const half = out.subspan((i - 1) * kHalf, kHalf);
      block[kHalf - 1] ^= static_cast<uint8_t>(halves * static_cast<size_t>(round) + i);
      std::ranges::copy(half, block.begin() + kHalf);
      int size = 0;
      if (EVP_CipherUpdate(aes, block.data(), &size, block.data(), 2 * kHalf) != 1) return false;
      std::ranges::copy(block.last<kHalf>(), half.begin());
    }
  }
  uint8_t check[kHalf];
  std::ranges::fill(check, kCheckOctet);
  return equalInConstantTime(block.first<kHalf>(), check);
}

}  // namespace

void KeyWrap::ContextFree::operator()(evp_cipher_ctx_st* context) const {
  EVP_CIPHER_CTX_free(context);
}

KeyWrap::KeyWrap(std::span<uint8_t const> kek) {
  if (!isKeySize(kek.size())) return;
  wrapping_ = newContext(kek, true);
  unwrapping_ = newContext(kek, false);
  if (unwrapping_) EVP_CIPHER_CTX_set_padding(unwrapping_.get(), 0);
}

KeyWrap::Context KeyWrap::newContext(std::span<uint8_t const> kek, bool wrapping) {
  bool const isShort = kek.size() == 16;
  char const* const name = wrapping ? (isShort ? "AES-128-WRAP" : "AES-256-WRAP")
                                    : (isShort ? "AES-128-ECB" : "AES-256-ECB");
  EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, name, nullptr);
  Context context(cipher ? EVP_CIPHER_CTX_new() : nullptr);
  if (context) {
    EVP_CIPHER_CTX_set_flags(context.get(), EVP_CIPHER_CTX_FLAG_WRAP_ALLOW);
    if (EVP_CipherInit_ex2(context.get(), cipher, kek.data(), nullptr, wrapping, nullptr) != 1) {
      context.reset();
    }
  }
  EVP_CIPHER_free(cipher);
  return context;
}

bool KeyWrap::wrap(std::span<uint8_t const> key, std::span<uint8_t> out) {
  if (keyed() && isKeySize(key.size()) && out.size() == key.size() + kOverhead) {
    return passed(wrapping_.get(), key, out);
  }
  wipe(out);
  return false;
}

bool KeyWrap::unwrap(std::span<uint8_t const> wrapped, std::span<uint8_t> out) {
  if (keyed() && isKeySize(out.size()) && wrapped.size() == out.size() + kOverhead) {
    SecretOctets<2 * kHalf> block;
    block.sizeIs(2 * kHalf);
    std::ranges::copy(wrapped.first(kHalf), block.octets().begin());
    std::ranges::copy(wrapped.subspan(kHalf), out.begin());
    if (unwrapBlocks(unwrapping_.get(), block.octets().first<2 * kHalf>(), out)) return true;
  }
  wipe(out);
  return false;
}

}  // namespace Macsec
