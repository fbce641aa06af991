#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "runtime/NetValues.h"
#include "runtime/String8.h"

namespace Macsec {

/// The value of a hexadecimal digit of either case, -1 for any other character.
int hexDigitValue(char digit);
/// True if there is nothing but hexadecimal digits in `text`, an even number of them. The empty
/// text passes.
bool isHexOctets(std::string_view text);

/// Writes two lower-case digits per octet, `2 * octets.size()` characters and no NUL.
void hexEncode(std::span<uint8_t const> octets, char* out);
/// Fills `out` from exactly two digits per octet. False for a text of another length or with
/// another character; `out` is then zero.
[[nodiscard]] bool hexDecode(std::string_view text, std::span<uint8_t> out);

/// The octets as lower-case text.
Vesk::String8 hexString(std::span<uint8_t const> octets);
/// The number in network order: eight digits.
Vesk::String8 hexString(Lumo::NetU32 const& number);
/// The same as a text that is wiped when its last copy goes.
Vesk::String8 secretHexString(std::span<uint8_t const> octets);

/// Sets `out` to `size` bytes as lower-case text; the empty text when there are none.
void convertByteArrayToHexString(unsigned char* bytes, int size, Vesk::String8& out);

}  // namespace Macsec
