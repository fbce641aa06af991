#pragma once

#include <openssl/core.h>
#include <openssl/core_dispatch.h>
#include <openssl/provider.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Macsec {

/// A provider named "fips" that a test can switch: it fails to load, or it has the algorithms of
/// the default provider as validated ones, all but one, or none at all. What it does lasts as long
/// as the process.
class SwitchableProvider {
 public:
  enum class Mood { fails, offersAll, offersNothing };

  /// `lacking` is one of the names of an algorithm that it hasn't got whatever its mood.
  static void install(Mood mood, std::string_view lacking = {}) {
    mood_ = mood;
    lacking_ = lacking;
    backing_ = OSSL_PROVIDER_load(nullptr, "default");
    OSSL_PROVIDER_add_builtin(nullptr, "fips", init);
  }

 private:
  static int init(OSSL_CORE_HANDLE const*, OSSL_DISPATCH const*, OSSL_DISPATCH const** out,
                  void** context) {
    static OSSL_DISPATCH const functions[] = {
        {OSSL_FUNC_PROVIDER_QUERY_OPERATION, reinterpret_cast<void (*)()>(query)}, {0, nullptr}};
    if (mood_ == Mood::fails || !backing_) return 0;
    *out = functions;
    *context = OSSL_PROVIDER_get0_provider_ctx(backing_);
    return 1;
  }

  static OSSL_ALGORITHM const* query(void*, int operation, int* noCache) {
    auto& own = algorithms_[operation];
    if (own.empty()) {
      auto const* all = OSSL_PROVIDER_query_operation(backing_, operation, noCache);
      for (; mood_ == Mood::offersAll && all && all->algorithm_names; ++all) {
        if (hasName(all->algorithm_names, lacking_)) continue;
        own.push_back({all->algorithm_names, "provider=fips,fips=yes", all->implementation,
                       all->algorithm_description});
      }
      own.push_back({nullptr, nullptr, nullptr, nullptr});
    }
    *noCache = 0;
    return own.data();
  }

  /// `names` are separated by colons.
  static bool hasName(std::string_view names, std::string_view name) {
    return !name.empty() && (":" + std::string(names) + ":").find(":" + std::string(name) + ":") !=
                                std::string::npos;
  }

  static inline Mood mood_;
  static inline std::string lacking_;
  static inline OSSL_PROVIDER* backing_ = nullptr;
  static inline std::map<int, std::vector<OSSL_ALGORITHM>> algorithms_;
};

}  // namespace Macsec
