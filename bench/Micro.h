#pragma once

namespace Bench {

/// Seconds of processor time of this process.
double processorTime();

/// Seconds for two AES-CMACs over `octets` octets as OpenSSL itself has them, with contexts that
/// stay keyed: a yardstick for what the two ends of one MKPDU can't do without.
double bareCrypto(unsigned octets);
/// The same as the codec computes them.
double ownCrypto(unsigned octets);

/// Seconds for one trace statement that is disabled, beyond the loop that it stands in.
double disabledTrace();

/// Seconds for each interface to write a configuration of so many profiles and interfaces again
/// that hasn't changed.
double unchangedReload(unsigned interfaces);

}  // namespace Bench
