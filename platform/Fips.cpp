#include "platform/Fips.h"

#include <openssl/conf.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <memory>
#include <string>

#include "runtime/Log.h"
#include "runtime/Trace.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::Fips");

Vesk::LogHandle const FIPS_PROVIDER_MISSING(
    "FIPS_PROVIDER_MISSING", Vesk::LogSeverity::error,
    "FIPS mode can't be set: OpenSSL's provider \"%s\" can't be loaded. Install a validated FIPS "
    "module of OpenSSL 3 and run 'openssl fipsinstall', or take FIPS mode out of the configuration",
    "The crypto library runs in FIPS mode only with a provider of validated algorithms, which the "
    "distribution may not ship.",
    "Build OpenSSL with its FIPS module, put fips.so into the modules directory that 'openssl "
    "version -m' names, run 'openssl fipsinstall', and start the process again.",
    0.0, 0.0);

Vesk::LogHandle const FIPS_ALGORITHM_MISSING(
    "FIPS_ALGORITHM_MISSING", Vesk::LogSeverity::error,
    "FIPS mode can't be set: OpenSSL's provider \"fips\" has no %s. Install another validated FIPS "
    "module of OpenSSL 3, or take FIPS mode out of the configuration",
    "The FIPS provider of the crypto library lacks an algorithm that key agreement needs.",
    "See with 'openssl list -providers -verbose' what the provider is, install one that has the "
    "algorithm, and start the process again.",
    0.0, 0.0);

constexpr char const* kCiphers[] = {"AES-128-CBC", "AES-256-CBC", "AES-128-WRAP", "AES-256-WRAP",
                                    "AES-256-GCM"};
constexpr char const* kMac = "CMAC";
constexpr char const* kGenerator = "CTR-DRBG";

constexpr char const* kProviders[] = {"fips", "base"};

std::string takeError() {
  char text[256] = "no reason given";
  if (auto const error = ERR_peek_last_error()) ERR_error_string_n(error, text, sizeof text);
  ERR_clear_error();
  return text;
}

// The other providers stay as they are.
bool load(char const* name) {
  if (OSSL_PROVIDER_available(nullptr, name) == 1) return true;
  if (OSSL_PROVIDER_try_load(nullptr, name, 1)) return true;
  VESK_TRACE(1, ": Provider ", name, " can't be loaded: ", takeError());
  Vesk::log(FIPS_PROVIDER_MISSING, name);
  return false;
}

bool validatedOnlyIs(bool on) {
  if (EVP_default_properties_enable_fips(nullptr, on) == 1) return true;
  VESK_TRACE(1, ": The default properties can't be set: ", takeError());
  return false;
}

bool hasCipher(OSSL_LIB_CTX* context, char const* name, char const* properties) {
  EVP_CIPHER* const found = EVP_CIPHER_fetch(context, name, properties);
  EVP_CIPHER_free(found);
  return found != nullptr;
}

bool hasMac(OSSL_LIB_CTX* context, char const* properties) {
  EVP_MAC* const found = EVP_MAC_fetch(context, kMac, properties);
  EVP_MAC_free(found);
  return found != nullptr;
}

bool hasGenerator(OSSL_LIB_CTX* context, char const* properties) {
  EVP_RAND* const found = EVP_RAND_fetch(context, kGenerator, properties);
  EVP_RAND_free(found);
  return found != nullptr;
}

std::optional<std::string> missingOf(OSSL_LIB_CTX* context, char const* properties) {
  ERR_set_mark();
  std::optional<std::string> missing;
  for (char const* const name : kCiphers) {
    if (!missing && !hasCipher(context, name, properties)) missing = name;
  }
  if (!missing && !hasMac(context, properties)) missing = kMac;
  if (!missing && !hasGenerator(context, properties)) missing = kGenerator;
  ERR_pop_to_mark();
  return missing;
}

// Where an algorithm is missing, all that OpenSSL says is that it can't be fetched.
bool hasEverything() {
  auto const missing = missingAlgorithm();
  if (!missing) return true;
  VESK_TRACE(1, ": The validated algorithms lack ", *missing);
  Vesk::log(FIPS_ALGORITHM_MISSING, *missing);
  return false;
}

}  // namespace

std::optional<std::string> missingAlgorithm() { return missingOf(nullptr, nullptr); }

std::optional<std::string> missingForFips() {
  std::unique_ptr<OSSL_LIB_CTX, void (*)(OSSL_LIB_CTX*)> const context(OSSL_LIB_CTX_new(),
                                                                       OSSL_LIB_CTX_free);
  std::unique_ptr<char, void (*)(char*)> const file(CONF_get1_default_config_file(),
                                                    [](char* text) { OPENSSL_free(text); });
  ERR_set_mark();
  static_cast<void>(OSSL_LIB_CTX_load_config(context.get(), file.get()));
  std::optional<std::string> missing;
  for (char const* const name : kProviders) {
    if (missing || OSSL_PROVIDER_try_load(context.get(), name, 1)) continue;
    missing = "the provider \"" + std::string(name) + "\" can't be loaded";
  }
  ERR_pop_to_mark();
  if (missing) return missing;
  auto const algorithm = missingOf(context.get(), "fips=yes");
  return algorithm ? std::optional("its provider has no " + *algorithm) : std::nullopt;
}

int FIPS_mode_set(int on) {
  if (!on) return validatedOnlyIs(false);
  for (char const* const name : kProviders) {
    if (!load(name)) return 0;
  }
  if (!validatedOnlyIs(true)) return 0;
  if (hasEverything()) return 1;
  validatedOnlyIs(false);
  return 0;
}

// The generators of a thread end with what OpenSSL keeps for that thread.
void RAND_cleanup() { OPENSSL_thread_stop(); }

}  // namespace Macsec
