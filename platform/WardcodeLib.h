#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "runtime/String8.h"

/// The form in which keys are stored: AES-256-GCM under the host's own key and a random nonce, so
/// that a tree, a trace or a file of state shows no key, and two encodings of one key differ.
///
///     "w1:" | hexadecimal text of: nonce (12) | key text encrypted (its length) | tag (16)
namespace WardcodeLib {

constexpr size_t kHostKeySize = 32;

/// The key under which the switch of the current world encodes and decodes; what was encoded under
/// another one doesn't decode any more. Who sets none lives with a random one, made at the first
/// use.
void hostKeyIs(std::span<uint8_t const, kHostKeySize> key);
/// Wipes the host key, as at a clean stop.
void hostKeyDel();

/// The stored form of a key's text. No key is the empty text in both forms. Throws
/// `std::runtime_error` if OpenSSL's providers lack the cipher.
Vesk::String8 doEncodeKey(Vesk::String8 key);
/// The key's text, wiped when its last copy goes. A text that `doEncodeKey` didn't give under this
/// host key gives no key, and is reported.
Vesk::String8 doDecodeKey(Vesk::String8 encoded);

/// Who hears that a stored key of this switch didn't decode: called once, with what happened and
/// what to do, and never with a key. Called at once if it has happened already.
void decodeFailureSinkIs(std::function<void(std::string_view)> sink);
/// Texts that didn't decode so far.
uint64_t decodeFailures();
/// Forgets the failures: the next one is reported again.
void decodeFailuresDel();

}  // namespace WardcodeLib
