#include "platform/RandomOctets.h"

#include <openssl/err.h>
#include <openssl/rand.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Macsec {

namespace {

constexpr size_t kMostAtOnce = 1 << 16;

std::string takeError() {
  char text[256];
  ERR_error_string_n(ERR_peek_last_error(), text, sizeof text);
  ERR_clear_error();
  return text;
}

}  // namespace

void randomOctets(std::span<uint8_t> out) {
  while (!out.empty()) {
    auto const part = out.first(std::min(out.size(), kMostAtOnce));
    // tidy: allow(randomness) the source that the world of a real process has
    if (RAND_priv_bytes(part.data(), static_cast<int>(part.size())) != 1) {
      throw std::runtime_error("OpenSSL gives no random octets: " + takeError() +
                               "; see its providers in openssl.cnf");
    }
    out = out.subspan(part.size());
  }
}

}  // namespace Macsec
