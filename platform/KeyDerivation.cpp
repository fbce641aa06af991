#include "platform/KeyDerivation.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <vector>

#include "platform/AesCmac.h"
#include "platform/CknOctets.h"
#include "platform/SecretOctets.h"
#include "runtime/World.h"

namespace Macsec {

namespace {

using Octets = std::span<uint8_t const>;

constexpr size_t kMaxKeySize = 32;

std::string_view textOf(unsigned char const* text) {
  return text ? reinterpret_cast<char const*>(text) : "";
}

/// What the CMAC of each round runs over:
///
///     counter (1) | label | 0x00 | context | length of the result in bits (2)
std::vector<uint8_t> roundInput(std::string_view label, Octets context, int bits) {
  std::vector<uint8_t> input(1);
  input.insert(input.end(), label.begin(), label.end());
  input.push_back(0);
  input.insert(input.end(), context.begin(), context.end());
  input.push_back(static_cast<uint8_t>(bits >> 8));
  input.push_back(static_cast<uint8_t>(bits));
  return input;
}

/// Fills `out` with the rounds of the derivation function, counted from 1: what NIST SP 800-108
/// calls a KDF in counter mode, with a counter of 8 bits. The KBKDF of OpenSSL 3.0 has one of 32
/// bits and no other, so the rounds are counted here; in FIPS mode the PRF is the provider's.
bool derived(AesCmac& cmac, std::vector<uint8_t> input, std::span<uint8_t> out) {
  SecretOctets<AesCmac::kSize> block;
  block.sizeIs(AesCmac::kSize);
  for (size_t done = 0; done < out.size(); done += block.size()) {
    ++input[0];
    if (!cmac.compute(input, block.octets().first<AesCmac::kSize>())) return false;
    std::copy_n(block.octets().begin(), std::min(block.size(), out.size() - done),
                out.begin() + static_cast<std::ptrdiff_t>(done));
  }
  return true;
}

/// Sets `result` to so many bits derived from the key; leaves it empty when it can't.
void derive(std::string_view keyHex, std::string_view label, Octets context, int bits,
            SecretOctets<kMaxKeySize>& result) {
  SecretOctets<kMaxKeySize> key;
  if (bits <= 0 || bits % 8 != 0 || bits > static_cast<int>(8 * kMaxKeySize)) return;
  if (!key.hexIs(keyHex)) return;
  AesCmac cmac(key.octets());
  result.sizeIs(static_cast<size_t>(bits) / 8);
  if (!derived(cmac, roundInput(label, context, bits), result.octets())) result.sizeIs(0);
}

/// The same with a context of hexadecimal text.
void deriveInContext(std::string_view keyHex, std::string_view label, std::string_view contextHex,
                     int bits, SecretOctets<kMaxKeySize>& result) {
  std::vector<uint8_t> context(contextHex.size() / 2);
  if (!hexDecode(contextHex, context)) return;
  derive(keyHex, label, context, bits, result);
}

}  // namespace

void deriveKek(unsigned char const* cak, unsigned char const* ckn, int bits, Vesk::String8& out) {
  SecretOctets<kMaxKeySize> kek;
  derive(textOf(cak), "IEEE8021 KEK", CknOctets(textOf(ckn)).identifier(), bits, kek);
  out = secretHexString(kek.octets());
}

void deriveIck(unsigned char const* cak, unsigned char const* ckn, int bits, Vesk::String8& out) {
  SecretOctets<kMaxKeySize> ick;
  derive(textOf(cak), "IEEE8021 ICK", CknOctets(textOf(ckn)).identifier(), bits, ick);
  out = secretHexString(ick.octets());
}

void deriveSak(unsigned char const* cak, unsigned char const* context, int bits,
               Vesk::String8& out) {
  SecretOctets<kMaxKeySize> sak;
  deriveInContext(textOf(cak), "IEEE8021 SAK", textOf(context), bits, sak);
  out = secretHexString(sak.octets());
}

void deriveCak(unsigned char const* key, unsigned char const* context, int bits,
               Vesk::String8& out) {
  SecretOctets<kMaxKeySize> cak;
  deriveInContext(textOf(key), "IEEE8021 EAP CAK", textOf(context), bits, cak);
  out = secretHexString(cak.octets());
}

void deriveCkn(unsigned char const* key, int cipher, unsigned char const* context, int cknBits,
               Vesk::String8& out) {
  SecretOctets<kMaxKeySize> ckn;
  deriveInContext(textOf(key), "IEEE8021 EAP CKN", textOf(context), cknBits, ckn);
  out = hexString(ckn.octets());
}

void generateSalt(unsigned char const* keyMsgId, unsigned int keyNum, Vesk::String8& out) {
  std::array<uint8_t, 12> salt;
  static_cast<void>(hexDecode(textOf(keyMsgId), salt));
  salt[0] ^= static_cast<uint8_t>(keyNum >> 8);
  salt[1] ^= static_cast<uint8_t>(keyNum);
  salt[2] ^= static_cast<uint8_t>(keyNum >> 24);
  salt[3] ^= static_cast<uint8_t>(keyNum >> 16);
  out = hexString(salt);
}

void randomNumberGenerator(int bits, Vesk::String8& out) {
  std::vector<uint8_t> octets(static_cast<size_t>(std::max(bits, 0)) / 8);
  if (!octets.empty()) Vesk::world().randomBytes(octets);
  out = hexString(octets);
}

}  // namespace Macsec
