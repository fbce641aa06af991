#include "host/state/SsciNumber.h"

#include <array>

#include "platform/Hex.h"

namespace Macsecd {

std::optional<uint32_t> ssciNumber(Macsec::Ssci const& ssci) {
  std::array<uint8_t, 4> octets;
  if (!Macsec::hexDecode(ssci.ssci().view(), octets)) return {};
  uint32_t number = 0;
  for (uint8_t const octet : octets) number = number << 8 | octet;
  return number;
}

}  // namespace Macsecd
