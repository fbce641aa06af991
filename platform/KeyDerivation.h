#pragma once

#include "runtime/String8.h"

namespace Macsec {

/// A text as the derivations take it: its characters, with a NUL behind them.
inline unsigned char const* bytesOf(Vesk::String8 const& text) {
  return reinterpret_cast<unsigned char const*>(text.charPtr());
}

// The key derivations of IEEE 802.1X-2010 (6.2.1 the function itself, 6.2.2 CAK and CKN from EAP,
// 9.3.3 KEK and ICK, 9.8.1 SAK), with AES-CMAC of the length of the key given.
//
// Texts end with a NUL. Keys and contexts are hexadecimal text of either case; results are lower
// case. The number of bits chooses the length of the result: a multiple of 8 up to 256. A key that
// isn't 16 or 32 octets of hexadecimal text, a context that isn't hexadecimal, or another number of
// bits gives the empty text, which everywhere stands for no key. Results that are keys are wiped
// when their last copy goes.

/// The key encrypting key of a CAK. `ckn` is the name's text (see `CknOctets`).
void deriveKek(unsigned char const* cak, unsigned char const* ckn, int bits, Vesk::String8& out);
/// The integrity check key of a CAK.
void deriveIck(unsigned char const* cak, unsigned char const* ckn, int bits, Vesk::String8& out);
/// A SAK from the key server's nonce, the member identifiers of all live members and the key
/// number, in this order in `context`.
void deriveSak(unsigned char const* cak, unsigned char const* context, int bits,
               Vesk::String8& out);
/// A CAK from the first half of an EAP master session key and the two addresses of the link, the
/// lower first.
void deriveCak(unsigned char const* key, unsigned char const* context, int bits,
               Vesk::String8& out);
/// The name of that CAK, from the EAP session identifier followed by the two addresses. `cipher` is
/// the number of bits of the cipher suite; the length of `key` follows it, and chooses alone. The
/// name is no secret.
void deriveCkn(unsigned char const* key, int cipher, unsigned char const* context, int cknBits,
               Vesk::String8& out);

/// The salt of the XPN cipher suites, 96 bits (IEEE 802.1AE 10.7.8). `keyMsgId` is the member
/// identifier of the key server, 24 digits; any other text counts as twelve zero octets.
void generateSalt(unsigned char const* keyMsgId, unsigned int keyNum, Vesk::String8& out);

/// As many random bits from the world's source, in whole octets; the empty text for less than one.
void randomNumberGenerator(int bits, Vesk::String8& out);

}  // namespace Macsec
