#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define VESK_ADDRESSES_ARE_CHECKED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VESK_ADDRESSES_ARE_CHECKED
#endif
#endif

#ifdef VESK_ADDRESSES_ARE_CHECKED
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#endif

// What memory that doesn't come from the heap tells the address sanitizer, if the program runs
// under it.

namespace Vesk {

#ifdef VESK_ADDRESSES_ARE_CHECKED
inline constexpr bool kAddressesAreChecked = true;
/// No object lies there.
inline void noObjectAt(void* memory, size_t size) { __asan_poison_memory_region(memory, size); }
inline void objectAt(void* memory, size_t size) { __asan_unpoison_memory_region(memory, size); }
/// Objects there may hold others.
inline void objectsMayLieAt(void* memory, size_t size) {
  __lsan_register_root_region(memory, size);
}
#else
inline constexpr bool kAddressesAreChecked = false;
inline void noObjectAt(void*, size_t) {}
inline void objectAt(void*, size_t) {}
inline void objectsMayLieAt(void*, size_t) {}
#endif

}  // namespace Vesk
