#include "lab/data/SecureAssociation.h"

namespace Lab {

// A low half that is small while the next one's is large belongs to the numbers behind.
uint64_t SecureAssociation::recovered(uint32_t low) const {
  constexpr uint64_t kLow = 0xffffffff;
  constexpr uint32_t kUpperHalf = 0x80000000;
  uint64_t const high = next_ & ~kLow;
  bool const hasWrapped = (next_ & kUpperHalf) != 0 && (low & kUpperHalf) == 0;
  return (hasWrapped ? high + kLow + 1 : high) | low;
}

Macsec::AesGcm::Iv SecureAssociation::iv(uint64_t number) const {
  Macsec::AesGcm::Iv iv = terms_.salt;
  for (size_t i = 0; i < 4; ++i) iv[i] ^= static_cast<uint8_t>(terms_.ssci >> (24 - 8 * i));
  for (size_t i = 0; i < 8; ++i) iv[4 + i] ^= static_cast<uint8_t>(number >> (56 - 8 * i));
  return iv;
}

}  // namespace Lab
