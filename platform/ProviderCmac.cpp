#include "platform/ProviderCmac.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>

namespace Macsec {

namespace {

char const* cipherName(size_t keySize) {
  if (keySize == 16) return "AES-128-CBC";
  return keySize == 32 ? "AES-256-CBC" : nullptr;
}

evp_mac_ctx_st* newContext() {
  EVP_MAC* const mac = EVP_MAC_fetch(nullptr, "CMAC", nullptr);
  if (!mac) return nullptr;
  EVP_MAC_CTX* const context = EVP_MAC_CTX_new(mac);
  EVP_MAC_free(mac);
  return context;
}

}  // namespace

void ProviderCmac::ContextFree::operator()(evp_mac_ctx_st* context) const {
  EVP_MAC_CTX_free(context);
}

ProviderCmac::ProviderCmac(std::span<uint8_t const> key) {
  char const* const cipher = cipherName(key.size());
  if (!cipher) return;
  context_.reset(newContext());
  OSSL_PARAM const params[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_CIPHER, const_cast<char*>(cipher), 0),
      OSSL_PARAM_construct_end()};
  if (!context_ || EVP_MAC_init(context_.get(), key.data(), key.size(), params) != 1) {
    context_.reset();
  }
}

bool ProviderCmac::compute(std::span<uint8_t const> message, std::span<uint8_t, kSize> out) {
  size_t size = 0;
  return context_ && EVP_MAC_init(context_.get(), nullptr, 0, nullptr) == 1 &&
         EVP_MAC_update(context_.get(), message.data(), message.size()) == 1 &&
         EVP_MAC_final(context_.get(), out.data(), &size, out.size()) == 1 && size == kSize;
}

}  // namespace Macsec
