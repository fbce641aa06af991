#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "lab/data/SecureAssociation.h"
#include "model/Sci.h"

namespace Lab {

/// What MACsec hardware does with the frames of data of one interface: it protects those that leave
/// under the transmit SA, and validates those that come under the receive SA of their association
/// number (IEEE 802.1AE-2018, 10.5 and 10.6). One peer; all frames are encrypted; a frame whose
/// packet number isn't above all that came before is late.
class SecY {
 public:
  using Frame = std::vector<uint8_t>;
  enum class Verdict : uint8_t {
    valid,
    untagged,  ///< in clear, or too short to be protected
    noSa,      ///< of another channel, or under an association number without a key
    late,
    invalid,  ///< by its ICV
  };

  static constexpr uint8_t kAssociationNumbers = 4;

  /// Sends as `sci` under this key from packet number `first` on; no frame is lost between it and
  /// the former.
  void txSaIs(Macsec::Sci const& sci, uint8_t an, std::span<uint8_t const> key,
              SaTerms const& terms, uint64_t first);
  void txSaDel() { tx_.reset(); }
  /// Receives from `peer` under this key, packet numbers from `lowest` on. What there was of
  /// another peer goes.
  void rxSaIs(Macsec::Sci const& peer, uint8_t an, std::span<uint8_t const> key,
              SaTerms const& terms, uint64_t lowest);
  void rxSaDel(uint8_t an) { rx_.at(an).reset(); }

  bool sends() const { return tx_.has_value(); }
  bool receives(uint8_t an) const { return rx_.at(an).has_value(); }

  /// The frame as it goes out; nothing without a transmit SA. `frame` has two addresses and an
  /// EtherType at least.
  std::optional<Frame> protect(std::span<uint8_t const> frame);
  /// `out` is the frame as its sender gave it if it is valid, and else what it was.
  Verdict validate(std::span<uint8_t const> frame, Frame& out);

 private:
  struct Transmit {
    Macsec::Sci sci;
    uint8_t an;
    SecureAssociation sa;
  };

  std::optional<Transmit> tx_;
  Macsec::Sci peer_;
  std::array<std::optional<SecureAssociation>, kAssociationNumbers> rx_;
};

}  // namespace Lab
