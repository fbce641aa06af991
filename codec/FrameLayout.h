#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "codec/Refusal.h"
#include "model/BasicParameterSet.h"
#include "model/Eapol.h"
#include "model/MacsecConstants.h"

namespace Codec {

using Octets = std::span<uint8_t const>;

/// A length with the zeros that follow to end a set on a multiple of 4.
constexpr size_t aligned(size_t length) {
  constexpr size_t kWord = Macsec::MacsecConstants::mkaWordAlignment;
  return (length + kWord - 1) / kWord * kWord;
}

/// Where the parts of an MKPDU lie in its frame.
///
///     | Eapol (18) | basic set, name, zeros | further sets | ICV indicator | ICV (16) |
///     |            |<------------------- body of the EAPOL header ------------------->|
///     |<-------------------------- covered by the ICV ------------------>|
///
/// Octets behind the body are padding of the link and count for nothing.
struct FrameLayout {
  /// From the destination address to the end of the body.
  Octets frame;
  /// The name of the CAK.
  Octets name;
  /// Where the further sets begin.
  size_t setsAt = 0;

  Macsec::Eapol const& eapol() const;
  Macsec::BasicParameterSet const& basic() const;
  /// What the ICV covers.
  Octets covered() const;
  Octets icv() const;
  /// All sets behind the basic one, with the ICV indicator.
  Octets sets() const { return covered().subspan(setsAt); }
};

/// True if EtherType and EAPOL type say that a frame is an MKPDU; of a frame that ends in front of
/// the EAPOL type, the EtherType alone.
bool isMkpdu(Octets frame);

// The checks of a frame, in the order in which they are made. Each fills in what it finds; the next
// one relies on it.

/// Length, destination, EtherType, EAPOL version and type.
Refusal checkEapol(Octets frame, FrameLayout& out);
/// MKA version and body length of the basic parameter set.
Refusal checkBasicSet(FrameLayout& out);
/// Algorithm agility parameter.
Refusal checkAlgorithm(FrameLayout const& layout);

}  // namespace Codec
