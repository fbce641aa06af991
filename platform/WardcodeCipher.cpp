#include "platform/WardcodeCipher.h"

#include <algorithm>

#include "platform/AesGcm.h"

namespace WardcodeLib {

namespace {

using Macsec::AesGcm;
static_assert(kNonceSize == AesGcm::kIvSize && kTagSize == AesGcm::kIcvSize);

AesGcm::Iv nonceOf(std::span<uint8_t const> sealed) {
  AesGcm::Iv nonce;
  std::copy_n(sealed.begin(), kNonceSize, nonce.begin());
  return nonce;
}

std::span<uint8_t const> prefix() {
  return {reinterpret_cast<uint8_t const*>(kPrefix.data()), kPrefix.size()};
}

}  // namespace

bool seal(std::span<uint8_t const, 32> key, std::string_view text, std::span<uint8_t> sealed) {
  auto const body = sealed.subspan(kNonceSize, text.size());
  std::ranges::copy(text, body.begin());
  return AesGcm(key).seal(nonceOf(sealed), prefix(), body, sealed.last<kTagSize>());
}

bool open(std::span<uint8_t const, 32> key, std::span<uint8_t const> sealed, uint8_t* text) {
  auto const body = sealed.subspan(kNonceSize, sealed.size() - kNonceSize - kTagSize);
  std::ranges::copy(body, text);
  return AesGcm(key).open(nonceOf(sealed), prefix(), {text, body.size()}, sealed.last<kTagSize>());
}

}  // namespace WardcodeLib
