#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Linux {

/// Watches over memory that a file is mapped to, as long as it lives. Where the file has become too
/// short, or its file system has no room, an access would end the process (SIGBUS); instead the
/// page becomes one of this process alone, full of 0xff, which no sound file is. Any other SIGBUS
/// does what it did before.
///
/// To be made and destroyed by one thread.
class MappedRange {
 public:
  explicit MappedRange(std::span<uint64_t> words);
  ~MappedRange();
  MappedRange(MappedRange const&) = delete;
  MappedRange& operator=(MappedRange const&) = delete;

  /// Whether all that was accessed was there.
  bool isWhole() const { return isWhole_.load(std::memory_order_relaxed); }

  /// Puts a page in the place of one that isn't there; false if no range holds the address. For the
  /// handler of the signal.
  static bool replacePage(uintptr_t address);

 private:
  uintptr_t const begin_;
  uintptr_t const end_;
  std::atomic<bool> isWhole_{true};
  MappedRange* next_ = nullptr;
};

}  // namespace Linux
