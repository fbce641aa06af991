#pragma once

#include <atomic>
#include <cstdint>

namespace Macsec::Brine {

static_assert(std::atomic_ref<uint64_t>::is_always_lock_free,
              "processes share these words without a lock");

/// Reads a word that another process may be writing; also from memory that can't be written.
inline uint64_t load(uint64_t const& word, std::memory_order order = std::memory_order_relaxed) {
  return std::atomic_ref<uint64_t>(const_cast<uint64_t&>(word)).load(order);
}

/// How writers store words that another process may be reading. They take this as a parameter so
/// that a test can stop them between any two stores.
struct SharedStore {
  static void store(uint64_t& word, uint64_t value,
                    std::memory_order order = std::memory_order_relaxed) {
    std::atomic_ref<uint64_t>(word).store(value, order);
  }
  /// What is stored after this is seen after what was stored before.
  static void fence() { std::atomic_thread_fence(std::memory_order_release); }
};

}  // namespace Macsec::Brine
