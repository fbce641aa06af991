#include "platform/KeyWrap.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <algorithm>
#include <memory>

namespace Macsec {

namespace {

enum class Pass { unwrap, wrap };

struct ContextFree {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, ContextFree>;

bool isKeySize(size_t size) { return size == 16 || size == 32; }

bool keyIs(EVP_CIPHER_CTX* context, std::span<uint8_t const> kek, Pass pass) {
  char const* const name = kek.size() == 16 ? "AES-128-WRAP" : "AES-256-WRAP";
  EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, name, nullptr);
  EVP_CIPHER_CTX_set_flags(context, EVP_CIPHER_CTX_FLAG_WRAP_ALLOW);
  bool const set = cipher && EVP_CipherInit_ex2(context, cipher, kek.data(), nullptr,
                                                static_cast<int>(pass), nullptr) == 1;
  EVP_CIPHER_free(cipher);
  return set;
}

/// One pass of the cipher over `in`. OpenSSL notes a refusal in its queue of errors.
bool passed(std::span<uint8_t const> kek, Pass pass, std::span<uint8_t const> in,
            std::span<uint8_t> out) {
  Context const context(EVP_CIPHER_CTX_new());
  int size = 0;
  if (context && keyIs(context.get(), kek, pass) &&
      EVP_CipherUpdate(context.get(), out.data(), &size, in.data(), static_cast<int>(in.size())) ==
          1 &&
      static_cast<size_t>(size) == out.size()) {
    return true;
  }
  ERR_clear_error();
  wipe(out);
  return false;
}

}  // namespace

KeyWrap::KeyWrap(std::span<uint8_t const> kek) {
  if (!isKeySize(kek.size())) return;
  kek_.sizeIs(kek.size());
  std::ranges::copy(kek, kek_.octets().begin());
}

bool KeyWrap::wrap(std::span<uint8_t const> key, std::span<uint8_t> out) const {
  if (keyed() && isKeySize(key.size()) && out.size() == key.size() + kOverhead) {
    return passed(kek_.octets(), Pass::wrap, key, out);
  }
  wipe(out);
  return false;
}

bool KeyWrap::unwrap(std::span<uint8_t const> wrapped, std::span<uint8_t> out) const {
  if (keyed() && isKeySize(out.size()) && wrapped.size() == out.size() + kOverhead) {
    return passed(kek_.octets(), Pass::unwrap, wrapped, out);
  }
  wipe(out);
  return false;
}

}  // namespace Macsec
