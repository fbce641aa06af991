#include "platform/AesGcm.h"

#include <openssl/evp.h>

namespace Macsec {

namespace {

EVP_CIPHER const* cipherOf(size_t keySize) {
  if (keySize == 16) return EVP_aes_128_gcm();
  return keySize == 32 ? EVP_aes_256_gcm() : nullptr;
}

}  // namespace

void AesGcm::ContextFree::operator()(evp_cipher_ctx_st* context) const {
  EVP_CIPHER_CTX_free(context);
}

AesGcm::AesGcm(std::span<uint8_t const> key) {
  EVP_CIPHER const* const cipher = cipherOf(key.size());
  if (!cipher) return;
  context_.reset(EVP_CIPHER_CTX_new());
  if (!context_ ||
      EVP_CipherInit_ex(context_.get(), cipher, nullptr, key.data(), nullptr, 1) != 1) {
    context_.reset();
  }
}

// All but the ICV.
bool AesGcm::pass(bool seals, Iv const& iv, std::span<uint8_t const> clear,
                  std::span<uint8_t> text) {
  int size = 0;
  auto* const context = context_.get();
  return context &&
         EVP_CipherInit_ex(context, nullptr, nullptr, nullptr, iv.data(), seals ? 1 : 0) == 1 &&
         EVP_CipherUpdate(context, nullptr, &size, clear.data(), static_cast<int>(clear.size())) ==
             1 &&
         EVP_CipherUpdate(context, text.data(), &size, text.data(),
                          static_cast<int>(text.size())) == 1;
}

bool AesGcm::seal(Iv const& iv, std::span<uint8_t const> clear, std::span<uint8_t> text,
                  std::span<uint8_t, kIcvSize> icv) {
  int size = 0;
  uint8_t none[1];
  return pass(true, iv, clear, text) && EVP_CipherFinal_ex(context_.get(), none, &size) == 1 &&
         EVP_CIPHER_CTX_ctrl(context_.get(), EVP_CTRL_AEAD_GET_TAG, kIcvSize, icv.data()) == 1;
}

bool AesGcm::open(Iv const& iv, std::span<uint8_t const> clear, std::span<uint8_t> text,
                  std::span<uint8_t const, kIcvSize> icv) {
  int size = 0;
  uint8_t none[1];
  return pass(false, iv, clear, text) &&
         EVP_CIPHER_CTX_ctrl(context_.get(), EVP_CTRL_AEAD_SET_TAG, kIcvSize,
                             const_cast<uint8_t*>(icv.data())) == 1 &&
         EVP_CipherFinal_ex(context_.get(), none, &size) == 1;
}

}  // namespace Macsec
