#include "platform/AesCmac.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace Macsec {

namespace {

/// Enough for most MKPDUs at once.
constexpr size_t kPiece = 256;

/// RFC 4493, 2.3: `block` times x, in constant time.
void doubleInto(std::span<uint8_t const> block, AesChain::Block& out) {
  out.sizeIs(AesCmac::kSize);
  unsigned carry = 0x87u * (block[0] >> 7);
  for (size_t i = block.size(); i-- > 0;) {
    unsigned const shifted = (unsigned{block[i]} << 1) ^ carry;
    out.octets()[i] = static_cast<uint8_t>(shifted);
    carry = shifted >> 8;
  }
}

}  // namespace

AesCmac::AesCmac(std::span<uint8_t const> key) {
  if (EVP_default_properties_is_fips_enabled(nullptr) == 1) {
    provider_ = ProviderCmac(key);
    return;
  }
  chain_ = AesChain(key);
  if (!makeSubkeys()) chain_ = AesChain();
}

bool AesCmac::makeSubkeys() {
  AesChain::Block zeros;
  zeros.sizeIs(kSize);
  if (!chain_.start(zeros.octets())) return false;
  doubleInto(zeros.octets(), wholeKey_);
  doubleInto(wholeKey_.octets(), paddedKey_);
  return true;
}

bool AesCmac::compute(std::span<uint8_t const> message, std::span<uint8_t, kSize> out) {
  bool const done =
      provider_.keyed() ? provider_.compute(message, out) : computeByChain(message, out);
  if (!done) std::ranges::fill(out, 0);
  return done;
}

// RFC 4493, 2.4, a piece at a time. The last block holds a subkey, and then the MAC, which may be a
// derived key; what the chain gave before is neither.
bool AesCmac::computeByChain(std::span<uint8_t const> message, std::span<uint8_t, kSize> out) {
  std::array<uint8_t, kPiece + kSize> piece;
  for (bool isFirst = true;; isFirst = false) {
    size_t const taken = std::min(message.size(), kPiece);
    std::ranges::copy(message.first(taken), piece.begin());
    message = message.subspan(taken);
    bool const isLast = message.empty();
    std::span const blocks = std::span(piece).first(isLast ? close(piece, taken) : kPiece);
    bool const done = isFirst ? chain_.start(blocks) : chain_.goOn(blocks);
    if (done && isLast) std::ranges::copy(blocks.last(kSize), out.begin());
    if (isLast) wipe(blocks.last(kSize));
    if (!done || isLast) return done;
  }
}

// Pads the last block of a message if it isn't whole, and adds the subkey that closes it. The
// octets that are to be encrypted then.
size_t AesCmac::close(std::span<uint8_t> piece, size_t size) const {
  bool const isWhole = size > 0 && size % kSize == 0;
  size_t const end = isWhole ? size : size / kSize * kSize + kSize;
  if (!isWhole) {
    std::ranges::fill(piece.first(end).subspan(size), 0);
    piece[size] = 0x80;
  }
  auto const& key = isWhole ? wholeKey_ : paddedKey_;
  addBlock(key.octets().first<kSize>(), piece.first(end).last<kSize>());
  return end;
}

bool AesCmac::matches(std::span<uint8_t const> message, std::span<uint8_t const> mac) {
  uint8_t own[kSize];
  bool const equal = compute(message, own) && equalInConstantTime(own, mac);
  wipe(own);
  return equal;
}

}  // namespace Macsec
