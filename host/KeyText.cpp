#include "host/KeyText.h"

#include <fmt/format.h>
#include <string.h>

#include <algorithm>
#include <cctype>

namespace Macsecd {

namespace {

bool isHex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

bool allHex(std::string_view text) { return std::all_of(text.begin(), text.end(), isHex); }

int digit(char c) {
  if (c <= '9') return c - '0';
  return std::tolower(static_cast<unsigned char>(c)) - 'a' + 10;
}

bool standsForOctets(std::string_view ckn) {
  return ckn.size() % 2 == 0 && ckn.size() <= 2 * maxKeyNameOctets && allHex(ckn);
}

/// What holds for keys of every length.
std::optional<Fault> faultOfDigits(std::string_view cak) {
  if (!allHex(cak)) {
    return Fault{"the key has characters that aren't hexadecimal digits",
                 "use the digits 0-9 and a-f alone"};
  }
  if (cak.size() % 2 != 0) {
    return Fault{fmt::format("the key has an odd number of digits, {}", cak.size()),
                 "two digits make an octet: add the one that is missing"};
  }
  return std::nullopt;
}

}  // namespace

std::string keyNameOctets(std::string_view ckn) {
  if (!standsForOctets(ckn)) return std::string(ckn);
  std::string octets;
  for (size_t i = 0; i < ckn.size(); i += 2) {
    octets += static_cast<char>(digit(ckn[i]) * 16 + digit(ckn[i + 1]));
  }
  return octets;
}

std::optional<Fault> faultOfKeyName(std::string_view ckn) {
  if (ckn.empty()) return Fault{"the key name is empty", "give a name of 1 to 32 octets"};
  size_t octets = keyNameOctets(ckn).size();
  if (octets <= maxKeyNameOctets) return std::nullopt;
  return Fault{fmt::format("the key name has {} octets, more than {}", octets, maxKeyNameOctets),
               "use at most 32 characters, or an even number of hexadecimal digits up to 64"};
}

size_t keyDigits(unsigned bits) { return bits / 4; }

std::optional<Fault> faultOfKey(std::string_view cak) {
  if (auto fault = faultOfDigits(cak)) return fault;
  if (cak.size() == keyDigits(128) || cak.size() == keyDigits(256)) return std::nullopt;
  return Fault{fmt::format("the key has {} digits", cak.size()),
               "give 32 hexadecimal digits for a 128-bit suite, 64 for a 256-bit one"};
}

std::optional<Fault> faultOfKey(std::string_view cak, unsigned bits) {
  if (auto fault = faultOfDigits(cak)) return fault;
  if (cak.size() == keyDigits(bits)) return std::nullopt;
  return Fault{
      fmt::format("the key has {} digits, which doesn't fit gcm-aes-xpn-{}", cak.size(), bits),
      fmt::format("give {} hexadecimal digits, or another cipher-suite", keyDigits(bits))};
}

void wipe(std::string& text) { explicit_bzero(text.data(), text.size()); }

}  // namespace Macsecd
