#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Macsec {

/// Grows by one with every allocation of this program, those of C++ and those of OpenSSL.
uint64_t allocations();
/// True if OpenSSL took the counting allocator before it allocated anything.
bool opensslIsCounted();
/// Watches what OpenSSL frees for these octets; an empty span ends the watch.
void freedOctetsWatchedIs(std::span<uint8_t const> octets);
/// Blocks freed under the watch, and those of them in which the octets still stood.
uint64_t freedBlocks();
uint64_t freedBlocksWithWatchedOctets();

}  // namespace Macsec
