#include "tests/platform/AllocationCount.h"

#include <malloc.h>
#include <openssl/crypto.h>

#include <algorithm>
#include <cstdlib>

namespace Macsec {

namespace {

// The program's own malloc goes before that of glibc, for libstdc++ too. The sanitizer brings one
// of its own; under it OpenSSL's allocations alone are counted.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kCountsEachMalloc = false;
#else
constexpr bool kCountsEachMalloc = true;
#endif

uint64_t count = 0;
std::span<uint8_t const> watched;
uint64_t freed = 0;
uint64_t freedWithOctets = 0;

void* countedMalloc(size_t size, char const*, int) {
  count += !kCountsEachMalloc;
  return std::malloc(size);
}

void* countedRealloc(void* block, size_t size, char const*, int) {
  ++count;
  return std::realloc(block, size);
}

void watchedFree(void* block, char const*, int) {
  if (block && !watched.empty()) {
    auto const* const from = static_cast<uint8_t const*>(block);
    auto const* const to = from + malloc_usable_size(block);
    ++freed;
    freedWithOctets += std::search(from, to, watched.begin(), watched.end()) != to;
  }
  std::free(block);
}

// Before main, hence before any use of OpenSSL.
bool const counted = CRYPTO_set_mem_functions(countedMalloc, countedRealloc, watchedFree) == 1;

}  // namespace

uint64_t allocations() { return count; }
bool opensslIsCounted() { return counted; }
void freedOctetsWatchedIs(std::span<uint8_t const> octets) {
  watched = octets;
  freed = freedWithOctets = 0;
}
uint64_t freedBlocks() { return freed; }
uint64_t freedBlocksWithWatchedOctets() { return freedWithOctets; }

}  // namespace Macsec

#ifndef __SANITIZE_ADDRESS__
extern "C" {
void* __libc_malloc(size_t size);
void* malloc(size_t size) {
  ++Macsec::count;
  return __libc_malloc(size);
}
}
#endif
