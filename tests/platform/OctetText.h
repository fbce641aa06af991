#pragma once

#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "platform/Hex.h"

namespace Macsec {

/// The octets of a hexadecimal text in a test.
inline std::vector<uint8_t> octetsOf(std::string_view hex) {
  std::vector<uint8_t> octets(hex.size() / 2);
  if (!hexDecode(hex, octets)) throw std::invalid_argument("not hexadecimal text");
  return octets;
}

/// A text as the derivation functions take it.
inline unsigned char const* chars(char const* text) {
  return reinterpret_cast<unsigned char const*>(text);
}

}  // namespace Macsec
