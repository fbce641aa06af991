#include "platform/KeyWrap.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <algorithm>

#include "platform/SecretOctets.h"

namespace Macsec {

namespace {

bool isKeySize(size_t size) { return size == 16 || size == 32; }

/// One pass of the cipher over `in`. OpenSSL notes a refusal in its queue of errors, which
/// allocates: only a peer that has the ICK gets as far as this.
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

}  // namespace

void KeyWrap::ContextFree::operator()(evp_cipher_ctx_st* context) const {
  EVP_CIPHER_CTX_free(context);
}

KeyWrap::KeyWrap(std::span<uint8_t const> kek) {
  if (!isKeySize(kek.size())) return;
  wrapping_ = newContext(kek, true);
  unwrapping_ = newContext(kek, false);
}

KeyWrap::Context KeyWrap::newContext(std::span<uint8_t const> kek, bool wrapping) {
  char const* const name = kek.size() == 16 ? "AES-128-WRAP" : "AES-256-WRAP";
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
    return passed(unwrapping_.get(), wrapped, out);
  }
  wipe(out);
  return false;
}

}  // namespace Macsec
