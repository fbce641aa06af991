#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/LineAllocator.h"

namespace Macsec::Brine {

/// The memory of a table of message counters, and the place for what is found in a damaged one.
class CounterMemory {
 public:
  virtual ~CounterMemory() = default;

  /// All words of the memory: at least `least`, at most `most` unless it had more; those that
  /// nobody has written are 0. Words given before aren't valid any more, but keep their values.
  /// Throws `std::system_error` when the system gives no memory.
  virtual std::span<uint64_t> attach(size_t least, size_t most) = 0;
  /// The words given aren't valid any more. They keep their values until the next `attach()`.
  virtual void detach() = 0;
  /// Whether the words given are still there. Where some have gone, each octet reads as 0xff, and
  /// what is written is seen by nobody else; `attach()` gives others.
  virtual bool isWhole() const { return true; }
  /// Keeps, for diagnosis, what was found damaged and the octets of the table as they were. A
  /// failure to do so is traced.
  virtual void corruptionFileIs(std::string_view text, std::span<uint8_t const> octets) = 0;
};

/// Memory of this process, as much as is in use.
class ProcessCounterMemory final : public CounterMemory {
 public:
  struct CorruptionFile {
    std::string text;
    std::vector<uint8_t> octets;
  };

  std::span<uint64_t> attach(size_t least, size_t most) override;
  void detach() override { isAttached_ = false; }
  void corruptionFileIs(std::string_view text, std::span<uint8_t const> octets) override;

  std::span<uint64_t> words() { return words_; }
  bool isAttached() const { return isAttached_; }
  /// The last of them.
  CorruptionFile const& corruptionFile() const { return corruptionFile_; }
  unsigned corruptionFiles() const { return corruptionFiles_; }

 private:
  std::vector<uint64_t, Vesk::LineAllocator<uint64_t>> words_;
  bool isAttached_ = false;
  CorruptionFile corruptionFile_;
  unsigned corruptionFiles_ = 0;
};

}  // namespace Macsec::Brine
