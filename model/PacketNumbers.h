#pragma once

#include <cstdint>

namespace Macsec {

/// A key that is reported with this packet number, of which 32 bits go over the wire, or a higher
/// one is nearly used up: three quarters of them are gone, and the key server makes another key.
constexpr uint32_t nearlyUsedUp = 0xC0000000;

}  // namespace Macsec
