#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "platform/AesGcm.h"

namespace Lab {

/// What is the same for all frames of a secure association but for its key.
struct SaTerms {
  std::array<uint8_t, Macsec::AesGcm::kIvSize> salt{};
  uint32_t ssci = 0;  ///< of who sends
};

/// A secure association of the XPN cipher suites (IEEE 802.1AE-2018, 14.7 and 14.8): a key, and the
/// 64-bit packet number that comes next.
class SecureAssociation {
 public:
  SecureAssociation(std::span<uint8_t const> key, SaTerms const& terms, uint64_t next)
      : key_(key), terms_(terms), next_(next) {}

  /// Whether its key is one.
  bool keyed() const { return key_.keyed(); }
  uint64_t next() const { return next_; }
  SaTerms const& terms() const { return terms_; }
  Macsec::AesGcm& key() { return key_; }

  /// Of a frame that is sent: the packet number that is its own.
  uint64_t take() { return next_++; }
  /// Of a received one: the number whose low half the tag has (10.6.2).
  uint64_t recovered(uint32_t low) const;
  /// A frame of this number has been valid.
  void reached(uint64_t number) {
    if (number >= next_) next_ = number + 1;
  }
  /// Of the SSCI and the packet number, with the salt.
  Macsec::AesGcm::Iv iv(uint64_t number) const;

 private:
  Macsec::AesGcm key_;
  SaTerms terms_;
  uint64_t next_;
};

}  // namespace Lab
