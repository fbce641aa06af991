#pragma once

#include <cstdint>
#include <utility>

#include "runtime/Text.h"

namespace Macsec {

/// The cipher suites; the numeric value is the key length in bits too.
enum class CipherSuite : uint16_t {
  gcmAesXpn128 = 128,
  gcmAesXpn256 = 256,
  None = 0,
  error = 1,
};

}  // namespace Macsec

template <>
struct Vesk::EnumNames<Macsec::CipherSuite> {
  static constexpr std::pair<Macsec::CipherSuite, char const*> names[] = {
      {Macsec::CipherSuite::gcmAesXpn128, "gcmAesXpn128"},
      {Macsec::CipherSuite::gcmAesXpn256, "gcmAesXpn256"},
      {Macsec::CipherSuite::None, "None"},
      {Macsec::CipherSuite::error, "error"},
  };
};

namespace Macsec {

/// As the configuration and everything that people read call it.
constexpr char const* suiteName(CipherSuite suite) {
  switch (suite) {
    case CipherSuite::gcmAesXpn128:
      return "gcm-aes-xpn-128";
    case CipherSuite::gcmAesXpn256:
      return "gcm-aes-xpn-256";
    case CipherSuite::None:
    case CipherSuite::error:
      break;
  }
  return "none";
}

using Vesk::stringValue;

inline std::ostream& operator<<(std::ostream& out, CipherSuite suite) {
  return Vesk::writeText(out, Vesk::valueToStrep(suite));
}

}  // namespace Macsec
