#pragma once

#include <optional>
#include <string>

/// The crypto library of the process in FIPS mode (OpenSSL 3). What the process runs on by then
/// goes on as it is; what is made afterwards comes from the FIPS provider.
namespace Macsec {

/// On: loads the providers "fips" and "base" and makes every fetch of an algorithm ask for one that
/// is validated. Off: lets fetches find any algorithm again. Returns 1, or 0 if a provider can't be
/// loaded or lacks an algorithm: then all is found as before, the reason is in the trace, and one
/// syslog message tells what is missing and what to do.
int FIPS_mode_set(int on);

// A header of OpenSSL makes this name a macro that does nothing.
#undef RAND_cleanup
/// Ends the random generators of this thread. The next random number comes from new ones, made of
/// what the default properties then allow.
void RAND_cleanup();

/// The first algorithm that key agreement needs and OpenSSL's providers, as they are, don't have.
std::optional<std::string> missingAlgorithm();

/// What FIPS mode would lack in a process of this machine: a provider or an algorithm. Changes
/// nothing of this process.
std::optional<std::string> missingForFips();

}  // namespace Macsec
