#include "platform/Fips.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

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

}  // namespace

int FIPS_mode_set(int on) {
  if (!on) return validatedOnlyIs(false);
  for (char const* const name : kProviders) {
    if (!load(name)) return 0;
  }
  return validatedOnlyIs(true);
}

// The generators of a thread end with what OpenSSL keeps for that thread.
void RAND_cleanup() { OPENSSL_thread_stop(); }

}  // namespace Macsec
