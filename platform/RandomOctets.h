#pragma once

#include <cstdint>
#include <span>

namespace Macsec {

/// Random octets from the generator of OpenSSL's provider for what stays private. For the world of
/// a real process: everybody else asks the world. Throws `std::runtime_error` if there are none.
void randomOctets(std::span<uint8_t> out);

}  // namespace Macsec
