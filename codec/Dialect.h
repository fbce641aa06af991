#pragma once

#include <cstdint>

namespace Codec {

/// How the name of a CAK goes on the wire.
enum class NameOnWire : uint8_t {
  /// The octets that the name's hexadecimal digits stand for.
  octets,
  /// The characters of the name's text. A name of more than 32 has no such form and goes as octets.
  characters,
};

/// What stands in front of the ICV.
enum class IcvIndicator : uint8_t {
  /// An ICV indicator that names a body of 4 octets.
  length4,
  /// An ICV indicator that names the ICV itself, 16 octets, as its body.
  length16,
  /// Nothing: the algorithm agility parameter says how long the ICV is.
  leftOut,
};

/// How frames are written on one interface, for equipment that wants them otherwise. Received
/// frames are understood in every dialect.
struct Dialect {
  NameOnWire nameOnWire = NameOnWire::octets;
  IcvIndicator icvIndicator = IcvIndicator::length4;

  friend bool operator==(Dialect const&, Dialect const&) = default;
};

}  // namespace Codec
