#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace WardcodeLib {

/// Names the form, and is authenticated with it.
constexpr std::string_view kPrefix = "w1:";
constexpr size_t kNonceSize = 12;
constexpr size_t kTagSize = 16;

/// Encrypts `text` by AES-256-GCM into `sealed` behind the nonce that stands there, and puts the
/// tag at its end. False if OpenSSL doesn't offer the cipher.
[[nodiscard]] bool seal(std::span<uint8_t const, 32> key, std::string_view text,
                        std::span<uint8_t> sealed);
/// Decrypts what `seal` made into `text`, which has room for it. False if it made it not under this
/// key, or not so; `text` is then zero.
[[nodiscard]] bool open(std::span<uint8_t const, 32> key, std::span<uint8_t const> sealed,
                        uint8_t* text);

}  // namespace WardcodeLib
