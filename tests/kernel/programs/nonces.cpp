// Opens the MACsec frames that were recorded on a wire, and tells which nonces they have used:
//
//   nonces FRAMES < KEYS
//
// FRAMES is a file with a frame per line, KEYS have a SAK per line: the key, the member identifier
// of its key server, and its number. All is hexadecimal. A frame that opens with a key, an SSCI and
// a packet number was made with these, whatever anybody says of the port: so nothing is taken on
// trust. One JSON object tells how many frames there were, how many no key has opened, and how many
// had the nonce of a former one under the same key; then the first of these.
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <sstream>
#include <vector>

#include "platform/KeyDerivation.h"

namespace Kernel {
namespace {

using Octets = std::vector<uint8_t>;
using Nonce = std::array<uint8_t, 12>;

// What stands where in a frame: addresses, EtherType, flags with the AN, short length, the lower
// half of the packet number, and the SCI if a flag says so (IEEE 802.1AE, 9.3).
constexpr size_t kFlagsAt = 14, kShortLengthAt = 15, kNumberAt = 16, kSciAt = 20;
constexpr size_t kSciSize = 8, kIcvSize = 16;
constexpr uint8_t kHasSci = 0x20, kIsEncrypted = 0x08;
constexpr uint32_t kMostSsci = 4, kMostUpper = 4;  // with more of either, a frame doesn't open

/// A way in which a frame may have been made.
struct Way {
  Octets sak;
  Nonce salt;
  uint32_t ssci = 0, upper = 0;  ///< and the upper half of the packet number
};

Octets fromHex(std::string const& text) {
  Octets octets;
  for (size_t at = 0; at + 1 < text.size(); at += 2) {
    octets.push_back(static_cast<uint8_t>(std::stoi(text.substr(at, 2), nullptr, 16)));
  }
  return octets;
}

std::vector<Way> readWays() {
  std::vector<Way> ways;
  std::string sak, server, number;
  while (std::cin >> sak >> server >> number) {
    Vesk::String8 text;
    auto const* const name = reinterpret_cast<unsigned char const*>(server.c_str());
    Macsec::generateSalt(name, static_cast<unsigned>(std::stoul(number, nullptr, 16)), text);
    Way way{fromHex(sak), {}, 0, 0};
    std::ranges::copy(fromHex(std::string(text.view())), way.salt.begin());
    for (way.ssci = 1; way.ssci <= kMostSsci; ++way.ssci) {
      for (way.upper = 0; way.upper < kMostUpper; ++way.upper) ways.push_back(way);
    }
  }
  return ways;
}

Nonce nonceOf(Way const& way, uint8_t const* number) {
  std::array<uint8_t, 12> words{};
  for (unsigned i = 0; i < 4; ++i) {
    words[i] = static_cast<uint8_t>(way.ssci >> (24 - 8 * i));
    words[4 + i] = static_cast<uint8_t>(way.upper >> (24 - 8 * i));
    words[8 + i] = number[i];
  }
  for (size_t i = 0; i < words.size(); ++i) words[i] ^= way.salt[i];
  return words;
}

bool opens(Way const& way, Nonce const& nonce, Octets const& frame) {
  size_t const head = frame[kFlagsAt] & kHasSci ? kSciAt + kSciSize : kSciAt;
  size_t const length = frame[kShortLengthAt] & 0x3f;
  if (frame.size() < head + std::max<size_t>(length, 1) + kIcvSize) return false;
  size_t const text = length ? length : frame.size() - head - kIcvSize;
  size_t const clear = frame[kFlagsAt] & kIsEncrypted ? head : head + text;
  static std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> const context(
      EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
  auto* const c = context.get();
  auto const* const cipher = way.sak.size() == 16 ? EVP_aes_128_gcm() : EVP_aes_256_gcm();
  Octets icv(frame.begin() + static_cast<ptrdiff_t>(head + text),
             frame.begin() + static_cast<ptrdiff_t>(head + text + kIcvSize)),
      out(frame.size());
  int size = 0;
  return EVP_DecryptInit_ex(c, cipher, nullptr, way.sak.data(), nonce.data()) == 1 &&
         EVP_DecryptUpdate(c, nullptr, &size, frame.data(), static_cast<int>(clear)) == 1 &&
         EVP_DecryptUpdate(c, out.data(), &size, frame.data() + clear,
                           static_cast<int>(head + text - clear)) == 1 &&
         EVP_CIPHER_CTX_ctrl(c, EVP_CTRL_GCM_SET_TAG, kIcvSize, icv.data()) == 1 &&
         EVP_DecryptFinal_ex(c, out.data(), &size) == 1;
}

/// Tries the ways of the last frames first: most frames are made as one of these.
class Judge {
 public:
  explicit Judge(std::vector<Way> ways) : ways_(std::move(ways)) {}

  void take(std::string const& line) {
    Octets const frame = fromHex(line);
    ++frames_;
    for (auto way = ways_.begin(); frame.size() > kSciAt && way != ways_.end(); ++way) {
      Nonce const nonce = nonceOf(*way, frame.data() + kNumberAt);
      if (!opens(*way, nonce, frame)) continue;
      if (!used_.insert({way->sak, nonce}).second && repeated_++ == 0) first_ = line;
      std::rotate(ways_.begin(), way, way + 1);
      return;
    }
    ++unopened_;
    if (firstUnopened_.empty()) firstUnopened_ = line;
  }
  void tell() const {
    std::printf("{\"frames\": %zu, \"unopened\": %zu, \"repeated\": %zu, ", frames_, unopened_,
                repeated_);
    std::printf("\"first-unopened\": \"%s\", \"first-repeated\": \"%s\"}\n", firstUnopened_.c_str(),
                first_.c_str());
  }

 private:
  std::vector<Way> ways_;
  std::set<std::pair<Octets, Nonce>> used_;
  size_t frames_ = 0, unopened_ = 0, repeated_ = 0;
  std::string first_, firstUnopened_;
};

}  // namespace
}  // namespace Kernel

int main(int count, char** arguments) {
  std::ifstream file(count == 2 ? arguments[1] : "");
  if (!file) {
    std::fprintf(stderr, "usage: nonces FRAMES < KEYS\n");
    return 2;
  }
  Kernel::Judge judge(Kernel::readWays());
  for (std::string line; std::getline(file, line);) judge.take(line);
  judge.tell();
}
