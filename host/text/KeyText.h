#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/text/Result.h"
#include "platform/CknOctets.h"
#include "runtime/String8.h"

namespace Macsecd {

/// Longest key name on the wire, in octets (IEEE 802.1X-2010 9.3.1).
inline constexpr size_t maxKeyNameOctets = Macsec::CknOctets::kMaxSize;

/// The octets of a key name (CKN) on the wire: an even number of hexadecimal digits, at most 64,
/// stands for its octets; any other text goes as its characters. Wiped, since an operator may have
/// written the key where its name belongs.
Vesk::String8 keyNameOctets(std::string_view ckn);
/// Why this text can't be a key name; nothing when it can.
std::optional<Fault> faultOfKeyName(std::string_view ckn);

/// Digits of a key (CAK) for a cipher suite of `bits` (128 or 256): 32 or 64.
size_t keyDigits(unsigned bits);
/// Why this text can't be a key of any suite: not hexadecimal, odd, or neither 32 nor 64 digits.
std::optional<Fault> faultOfKey(std::string_view cak);
/// The same, and the length has to be that of the suite of `bits`.
std::optional<Fault> faultOfKey(std::string_view cak, unsigned bits);

/// Whether two key names give one and the same keys with the same CAK: their first 16 octets agree,
/// with zeros behind a shorter name (IEEE 802.1X-2010 9.3.3).
bool deriveAlike(std::string_view ckn, std::string_view otherCkn);

/// Overwrites a text that held a key, so that it doesn't stay in memory.
void wipe(std::string& text);
/// Overwrites what functions that have returned left below the caller's frame: a copy of a text
/// goes through registers, and those are stored on the stack, among others when a function of a
/// shared library is called for the first time.
void wipeStack();

}  // namespace Macsecd
