#include "platform/Hex.h"

#include <algorithm>

namespace Macsec {

namespace {

constexpr char kDigits[] = "0123456789abcdef";

}  // namespace

int hexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

bool isHexOctets(std::string_view text) {
  return text.size() % 2 == 0 && std::all_of(text.begin(), text.end(),
                                             [](char digit) { return hexDigitValue(digit) >= 0; });
}

void hexEncode(std::span<uint8_t const> octets, char* out) {
  for (uint8_t octet : octets) {
    *out++ = kDigits[octet >> 4];
    *out++ = kDigits[octet & 15];
  }
}

bool hexDecode(std::string_view text, std::span<uint8_t> out) {
  bool const fits = text.size() == 2 * out.size() && isHexOctets(text);
  for (size_t i = 0; i < out.size(); ++i) {
    out[i] =
        fits
            ? static_cast<uint8_t>(hexDigitValue(text[2 * i]) << 4 | hexDigitValue(text[2 * i + 1]))
            : 0;
  }
  return fits;
}

Vesk::String8 hexString(std::span<uint8_t const> octets) {
  return Vesk::String8::filled(2 * octets.size(), [&](char* text) { hexEncode(octets, text); });
}

Vesk::String8 secretHexString(std::span<uint8_t const> octets) {
  return Vesk::String8::secretFilled(2 * octets.size(),
                                     [&](char* text) { hexEncode(octets, text); });
}

Vesk::String8 hexString(Lumo::NetU32 const& number) {
  Vesk::String8 digits;
  convertByteArrayToHexString(const_cast<unsigned char*>(number.bytes()), sizeof number, digits);
  return digits;
}

void convertByteArrayToHexString(unsigned char* bytes, int size, Vesk::String8& out) {
  out = hexString({bytes, static_cast<size_t>(std::max(size, 0))});
}

}  // namespace Macsec
