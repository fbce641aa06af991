#include "host/text/KeyText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/CknOctets.h"
#include "platform/Hex.h"
#include "platform/SecretOctets.h"

namespace Macsecd {

namespace {

bool allHex(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return Macsec::hexDigitValue(c) >= 0; });
}

bool allZero(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c == '0'; });
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
  if (!cak.empty() && allZero(cak)) {
    return Fault{"the key is all zeros, which anybody would try first",
                 "make one with 'openssl rand -hex 16', or 32 for a 256-bit suite"};
  }
  return std::nullopt;
}

}  // namespace

Vesk::String8 keyNameOctets(std::string_view ckn) {
  if (!Macsec::CknOctets::standsForOctets(ckn)) return Vesk::String8::secret(ckn);
  Macsec::CknOctets const name(ckn);
  return Vesk::String8::secretFilled(
      name.octets().size(), [&](char* octets) { std::ranges::copy(name.octets(), octets); });
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

bool deriveAlike(std::string_view ckn, std::string_view otherCkn) {
  return std::ranges::equal(Macsec::CknOctets(ckn).identifier(),
                            Macsec::CknOctets(otherCkn).identifier());
}

void wipe(std::string& text) {
  Macsec::wipe({reinterpret_cast<uint8_t*>(text.data()), text.size()});
}

[[gnu::noinline]] void wipeStack() {
  std::array<uint8_t, 64 * 1024> below;
  Macsec::wipe(below);
}

}  // namespace Macsecd
