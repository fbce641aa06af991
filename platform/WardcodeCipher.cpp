#include "platform/WardcodeCipher.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <algorithm>
#include <memory>

#include "platform/SecretOctets.h"

namespace WardcodeLib {

namespace {

struct Free {
  void operator()(EVP_CIPHER* cipher) const { EVP_CIPHER_free(cipher); }
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, Free>;

unsigned char const* octetsOf(std::string_view text) {
  return reinterpret_cast<unsigned char const*>(text.data());
}

/// A context that has key, nonce and prefix; null if OpenSSL doesn't offer the cipher.
Context newContext(std::span<uint8_t const, 32> key, uint8_t const* nonce, bool sealing) {
  std::unique_ptr<EVP_CIPHER, Free> const cipher(EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr));
  Context context(cipher ? EVP_CIPHER_CTX_new() : nullptr);
  int size = 0;
  if (context &&
      EVP_CipherInit_ex2(context.get(), cipher.get(), key.data(), nonce, sealing, nullptr) == 1 &&
      EVP_CipherUpdate(context.get(), nullptr, &size, octetsOf(kPrefix),
                       static_cast<int>(kPrefix.size())) == 1) {
    return context;
  }
  return nullptr;
}

}  // namespace

bool seal(std::span<uint8_t const, 32> key, std::string_view text, std::span<uint8_t> sealed) {
  auto const context = newContext(key, sealed.data(), true);
  uint8_t* const body = sealed.data() + kNonceSize;
  int size = 0;
  return context &&
         EVP_CipherUpdate(context.get(), body, &size, octetsOf(text),
                          static_cast<int>(text.size())) == 1 &&
         EVP_CipherFinal_ex(context.get(), body + size, &size) == 1 &&
         EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_GET_TAG, kTagSize, body + text.size()) ==
             1;
}

bool open(std::span<uint8_t const, 32> key, std::span<uint8_t const> sealed, uint8_t* text) {
  auto const context = newContext(key, sealed.data(), false);
  size_t const textSize = sealed.size() - kNonceSize - kTagSize;
  uint8_t tag[kTagSize];
  std::copy(sealed.end() - kTagSize, sealed.end(), tag);
  int size = 0;
  if (context &&
      EVP_CipherUpdate(context.get(), text, &size, sealed.data() + kNonceSize,
                       static_cast<int>(textSize)) == 1 &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_TAG, kTagSize, tag) == 1 &&
      EVP_CipherFinal_ex(context.get(), text + size, &size) == 1) {
    return true;
  }
  ERR_clear_error();
  Macsec::wipe({text, textSize});
  return false;
}

}  // namespace WardcodeLib
