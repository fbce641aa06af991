#pragma once

#include <openssl/core.h>
#include <openssl/core_dispatch.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <string_view>
#include <vector>

namespace Macsec {

/// A provider whose AES-128-CBC is that of the default provider until it refuses to work. From its
/// installation on nothing is found elsewhere. What it does lasts as long as the process.
class RefusingProvider {
 public:
  static bool install() {
    backing_ = OSSL_PROVIDER_load(nullptr, "default");
    return OSSL_PROVIDER_add_builtin(nullptr, "refusing", init) == 1 &&
           OSSL_PROVIDER_load(nullptr, "refusing") &&
           EVP_set_default_properties(nullptr, "provider=refusing") == 1;
  }
  /// Works so many times from now on, and refuses the next one.
  static void worksLeftIs(int worksLeft) { worksLeft_ = worksLeft; }

 private:
  using Update = OSSL_FUNC_cipher_update_fn;

  static int init(OSSL_CORE_HANDLE const*, OSSL_DISPATCH const*, OSSL_DISPATCH const** out,
                  void** context) {
    static OSSL_DISPATCH const functions[] = {
        {OSSL_FUNC_PROVIDER_QUERY_OPERATION, reinterpret_cast<void (*)()>(query)}, {0, nullptr}};
    *out = functions;
    *context = OSSL_PROVIDER_get0_provider_ctx(backing_);
    return 1;
  }

  static OSSL_ALGORITHM const* query(void*, int operation, int* noCache) {
    if (operation != OSSL_OP_CIPHER) return nullptr;
    static OSSL_ALGORITHM const ciphers[] = {
        {"AES-128-CBC", "provider=refusing", refusing(noCache), nullptr},
        {nullptr, nullptr, nullptr, nullptr}};
    return ciphers;
  }

  /// The functions of the default provider's cipher, but for one.
  static OSSL_DISPATCH const* refusing(int* noCache) {
    static std::vector<OSSL_DISPATCH> functions;
    auto const* all = OSSL_PROVIDER_query_operation(backing_, OSSL_OP_CIPHER, noCache);
    while (std::string_view(all->algorithm_names).find("AES-128-CBC:") != 0) ++all;
    for (auto const* f = all->implementation; f->function_id != 0; ++f) functions.push_back(*f);
    for (OSSL_DISPATCH& function : functions) {
      if (function.function_id != OSSL_FUNC_CIPHER_UPDATE) continue;
      original_ = reinterpret_cast<Update*>(function.function);
      function.function = reinterpret_cast<void (*)()>(update);
    }
    functions.push_back({0, nullptr});
    return functions.data();
  }

  static int update(void* context, unsigned char* out, size_t* outSize, size_t outRoom,
                    unsigned char const* in, size_t inSize) {
    return worksLeft_-- == 0 ? 0 : original_(context, out, outSize, outRoom, in, inSize);
  }

  static inline OSSL_PROVIDER* backing_ = nullptr;
  static inline Update* original_ = nullptr;
  static inline int worksLeft_ = -1;
};

}  // namespace Macsec
