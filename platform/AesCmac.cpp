#include "platform/AesCmac.h"

#include <openssl/evp.h>

#include <algorithm>

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

// RFC 4493, 2.4, a piece at a time.
bool AesCmac::computeByChain(std::span<uint8_t const> message, std::span<uint8_t, kSize> out) {
  SecretOctets<kPiece> piece;
  for (bool isFirst = true;; isFirst = false) {
    size_t const taken = std::min(message.size(), kPiece);
    piece.sizeIs(taken + kSize);
    std::ranges::copy(message.first(taken), piece.octets().begin());
    message = message.subspan(taken);
    if (message.empty()) piece.sizeIs(close(piece.octets(), taken));
    if (!(isFirst ? chain_.start(piece.octets()) : chain_.goOn(piece.octets()))) return false;
    if (message.empty()) break;
  }
  std::ranges::copy(piece.octets().last(kSize), out.begin());
  return true;
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
