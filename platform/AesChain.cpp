#include "platform/AesChain.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>

#include "runtime/Assert.h"

namespace Macsec {

namespace {

char const* cipherName(size_t keySize) {
  if (keySize == 16) return "AES-128-CBC";
  return keySize == 32 ? "AES-256-CBC" : nullptr;
}

bool keyIs(EVP_CIPHER_CTX* context, char const* name, uint8_t const* key) {
  EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, name, nullptr);
  bool const set = cipher && EVP_EncryptInit_ex2(context, cipher, key, nullptr, nullptr) == 1 &&
                   EVP_CIPHER_CTX_set_padding(context, 0) == 1;
  EVP_CIPHER_free(cipher);
  return set;
}

}  // namespace

void AesChain::ContextFree::operator()(evp_cipher_ctx_st* context) const {
  EVP_CIPHER_CTX_free(context);
}

AesChain::AesChain(std::span<uint8_t const> key) {
  char const* const name = cipherName(key.size());
  if (!name) return;
  context_.reset(EVP_CIPHER_CTX_new());
  if (!context_ || !keyIs(context_.get(), name, key.data())) context_.reset();
}

// At first, and after a refusal, it isn't known what the cipher goes on from.
bool AesChain::resume() {
  if (!context_) return false;
  if (last_.size() == kBlock) return true;
  constexpr uint8_t kZeros[kBlock] = {};
  if (EVP_EncryptInit_ex2(context_.get(), nullptr, nullptr, kZeros, nullptr) != 1) return false;
  last_.sizeIs(kBlock);
  std::ranges::fill(last_.octets(), 0);
  return true;
}

bool AesChain::start(std::span<uint8_t> blocks) {
  if (!resume()) return false;
  addBlock(last_.octets().first<kBlock>(), blocks.first<kBlock>());
  return goOn(blocks);
}

bool AesChain::goOn(std::span<uint8_t> blocks) {
  VESK_ASSERT(last_.size() == kBlock && !blocks.empty() && blocks.size() % kBlock == 0);
  int size = 0;
  bool const done = EVP_EncryptUpdate(context_.get(), blocks.data(), &size, blocks.data(),
                                      static_cast<int>(blocks.size())) == 1 &&
                    static_cast<size_t>(size) == blocks.size();
  last_.sizeIs(done ? kBlock : 0);
  std::ranges::copy(blocks.last(last_.size()), last_.octets().begin());
  return done;
}

void addBlock(std::span<uint8_t const, AesChain::kBlock> addend,
              std::span<uint8_t, AesChain::kBlock> sum) {
  std::array<uint8_t, AesChain::kBlock> added;
  for (size_t i = 0; i < added.size(); ++i) added[i] = sum[i] ^ addend[i];
  std::ranges::copy(added, sum.begin());
}

}  // namespace Macsec
