#include "platform/SecretOctets.h"

#include <openssl/crypto.h>

namespace Macsec {

void wipe(std::span<uint8_t> octets) { OPENSSL_cleanse(octets.data(), octets.size()); }

bool equalInConstantTime(std::span<uint8_t const> a, std::span<uint8_t const> b) {
  return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace Macsec
