#include "runtime/EthAddr.h"

#include <cstdio>
#include <ostream>

namespace Lumo {

namespace {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<EthAddr> EthAddr::parsed(std::string_view text) {
  if (text.size() != 17) return std::nullopt;
  std::array<uint8_t, 6> bytes;
  for (size_t i = 0; i < bytes.size(); ++i) {
    int const high = hexDigit(text[3 * i]);
    int const low = hexDigit(text[3 * i + 1]);
    if (high < 0 || low < 0 || (i < 5 && text[3 * i + 2] != ':')) return std::nullopt;
    bytes[i] = static_cast<uint8_t>(high << 4 | low);
  }
  return EthAddr(bytes);
}

Vesk::String8 EthAddr::stringValue() const {
  char text[18];
  std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", bytes_[0], bytes_[1], bytes_[2],
                bytes_[3], bytes_[4], bytes_[5]);
  return text;
}

std::ostream& operator<<(std::ostream& out, EthAddr const& addr) {
  return out << addr.stringValue();
}

}  // namespace Lumo
