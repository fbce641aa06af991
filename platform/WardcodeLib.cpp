#include "platform/WardcodeLib.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/Hex.h"
#include "platform/SecretOctets.h"
#include "platform/WardcodeCipher.h"
#include "runtime/World.h"

namespace WardcodeLib {

namespace {

constexpr char kFailureText[] =
    "A stored key doesn't decode under the key of this host and counts as no key. Enter the key "
    "again, or restore the host key file under which it was stored.";

/// What didn't decode, and who hears of it.
struct Failures {
  uint64_t count = 0;
  bool reported = false;
  std::function<void(std::string_view)> sink;

  void report() {
    if (count == 0 || reported || !sink) return;
    reported = true;
    sink(kFailureText);
  }
};

/// What this library keeps for each switch.
struct Storage {
  Macsec::SecretOctets<kHostKeySize> hostKey;
  Failures failures;
};

Storage& storage() { return Vesk::world().kept<Storage>(); }

std::span<uint8_t const, kHostKeySize> hostKey() {
  auto& key = storage().hostKey;
  if (key.size() == 0) {
    key.sizeIs(kHostKeySize);
    Vesk::world().randomBytes(key.octets());
  }
  return key.octets().first<kHostKeySize>();
}

Vesk::String8 noKey() {
  auto& failures = storage().failures;
  ++failures.count;
  failures.report();
  return {};
}

bool isEncoded(std::string_view text) {
  return text.starts_with(kPrefix) && Macsec::isHexOctets(text.substr(kPrefix.size())) &&
         text.size() > kPrefix.size() + 2 * (kNonceSize + kTagSize);
}

}  // namespace

void hostKeyIs(std::span<uint8_t const, kHostKeySize> key) {
  auto& hostKey = storage().hostKey;
  hostKey.sizeIs(kHostKeySize);
  std::copy(key.begin(), key.end(), hostKey.octets().begin());
}

void hostKeyDel() {
  Macsec::wipe(storage().hostKey.octets());
  storage().hostKey.sizeIs(0);
}

Vesk::String8 doEncodeKey(Vesk::String8 key) {
  if (key.empty()) return {};
  auto const host = hostKey();
  std::vector<uint8_t> sealed(kNonceSize + key.size() + kTagSize);
  Vesk::world().randomBytes(std::span(sealed).first<kNonceSize>());
  if (!seal(host, key.view(), sealed)) {
    throw std::runtime_error(
        "OpenSSL's providers have no AES-256-GCM to store keys with; see that "
        "openssl.cnf turns the default or the FIPS provider on");
  }
  return Vesk::String8::filled(kPrefix.size() + 2 * sealed.size(), [&](char* text) {
    Macsec::hexEncode(sealed, std::copy(kPrefix.begin(), kPrefix.end(), text));
  });
}

Vesk::String8 doDecodeKey(Vesk::String8 encoded) {
  if (encoded.empty()) return {};
  if (!isEncoded(encoded.view())) return noKey();
  auto const hex = encoded.view().substr(kPrefix.size());
  std::vector<uint8_t> sealed(hex.size() / 2);
  static_cast<void>(Macsec::hexDecode(hex, sealed));
  bool opened = false;
  auto const key = Vesk::String8::secretFilled(
      sealed.size() - kNonceSize - kTagSize,
      [&](char* text) { opened = open(hostKey(), sealed, reinterpret_cast<uint8_t*>(text)); });
  return opened ? key : noKey();
}

void decodeFailureSinkIs(std::function<void(std::string_view)> sink) {
  storage().failures.sink = std::move(sink);
  storage().failures.report();
}

uint64_t decodeFailures() { return storage().failures.count; }

void decodeFailuresDel() {
  storage().failures.count = 0;
  storage().failures.reported = false;
}

}  // namespace WardcodeLib
