#include "platform/AesGcm.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include "platform/SecretOctets.h"

namespace Macsec {

namespace {

char const* cipherName(size_t keySize) {
  if (keySize == 16) return "AES-128-GCM";
  return keySize == 32 ? "AES-256-GCM" : nullptr;
}

bool keyIs(EVP_CIPHER_CTX* context, char const* name, uint8_t const* key) {
  EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, name, nullptr);
  bool const set = cipher && EVP_CipherInit_ex2(context, cipher, key, nullptr, 1, nullptr) == 1;
  EVP_CIPHER_free(cipher);
  return set;
}

void refused(std::span<uint8_t> text) {
  ERR_clear_error();
  wipe(text);
}

}  // namespace

void AesGcm::ContextFree::operator()(evp_cipher_ctx_st* context) const {
  EVP_CIPHER_CTX_free(context);
}

AesGcm::AesGcm(std::span<uint8_t const> key) {
  char const* const name = cipherName(key.size());
  if (!name) return;
  context_.reset(EVP_CIPHER_CTX_new());
  if (!context_ || !keyIs(context_.get(), name, key.data())) context_.reset();
}

// All but the ICV.
bool AesGcm::pass(bool seals, Iv const& iv, std::span<uint8_t const> clear,
                  std::span<uint8_t> text) {
  int size = 0;
  auto* const context = context_.get();
  return context &&
         EVP_CipherInit_ex2(context, nullptr, nullptr, iv.data(), seals ? 1 : 0, nullptr) == 1 &&
         EVP_CipherUpdate(context, nullptr, &size, clear.data(), static_cast<int>(clear.size())) ==
             1 &&
         EVP_CipherUpdate(context, text.data(), &size, text.data(),
                          static_cast<int>(text.size())) == 1;
}

bool AesGcm::seal(Iv const& iv, std::span<uint8_t const> clear, std::span<uint8_t> text,
                  std::span<uint8_t, kIcvSize> icv) {
  int size = 0;
  uint8_t none[1];
  if (pass(true, iv, clear, text) && EVP_CipherFinal_ex(context_.get(), none, &size) == 1 &&
      EVP_CIPHER_CTX_ctrl(context_.get(), EVP_CTRL_AEAD_GET_TAG, kIcvSize, icv.data()) == 1) {
    return true;
  }
  refused(text);
  return false;
}

bool AesGcm::open(Iv const& iv, std::span<uint8_t const> clear, std::span<uint8_t> text,
                  std::span<uint8_t const, kIcvSize> icv) {
  int size = 0;
  uint8_t none[1];
  if (pass(false, iv, clear, text) &&
      EVP_CIPHER_CTX_ctrl(context_.get(), EVP_CTRL_AEAD_SET_TAG, kIcvSize,
                          const_cast<uint8_t*>(icv.data())) == 1 &&
      EVP_CipherFinal_ex(context_.get(), none, &size) == 1) {
    return true;
  }
  refused(text);
  return false;
}

}  // namespace Macsec
