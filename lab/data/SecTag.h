#pragma once

#include <cstddef>
#include <cstdint>

#include "model/Sci.h"
#include "runtime/EthAddr.h"
#include "runtime/NetValues.h"

namespace Lab {

/// The head of a protected frame, up to its secure data (IEEE 802.1AE-2018, 9.3).
///
///       0               1               2               3
///      +---------------+---------------+---------------+---------------+
///    0 | destination (6)                                               |
///    6 | source (6)                                                    |
///      +---------------+---------------+---------------+---------------+
///   12 | EtherType 88-E5               |V|E|S|B|E|C|AN | short length  |
///      +---------------+---------------+---------------+---------------+
///   16 | packet number, its low half                                   |
///      +---------------+---------------+---------------+---------------+
///   20 | SCI: address (6), port (2)                                    |
///      +---------------+---------------+---------------+---------------+
///
/// Here it always has the SCI (S), and its data is encrypted (the second E, and C).
struct SecTag {
  static constexpr uint16_t kEtherType = 0x88e5;
  static constexpr uint8_t kTci = 0x2c;
  static constexpr uint8_t kAnMask = 0x03;
  /// Less than so many octets of secure data stand in the short length.
  static constexpr size_t kShort = 48;

  Lumo::EthAddr destination;
  Lumo::EthAddr source;
  Lumo::NetU16 etherType;
  uint8_t tciAndAn;
  uint8_t shortLength;
  Lumo::NetU32 packetNumber;
  Lumo::EthAddr sciAddress;
  Lumo::NetU16 sciPort;

  uint8_t an() const { return tciAndAn & kAnMask; }
  Macsec::Sci sci() const { return Macsec::Sci(sciAddress, sciPort.value()); }
};

static_assert(sizeof(SecTag) == 28 && alignof(SecTag) == 1);

}  // namespace Lab
