#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "linux/keep/MappedRange.h"
#include "linux/process/Descriptor.h"
#include "platform/CounterMemory.h"
#include "platform/MessageCounterReader.h"
#include "platform/MessageCounters.h"

namespace Linux {

/// Memory that is mapped until the end of its scope. A file that is shortened under it ends no
/// process (linux/keep/MappedRange.h).
class Mapping {
 public:
  Mapping() = default;
  /// Throws `std::system_error`. `protection` as in mmap(2).
  Mapping(Descriptor const& file, size_t octets, int protection);
  Mapping(Mapping&& o) noexcept
      : words_(std::exchange(o.words_, {})), range_(std::move(o.range_)) {}
  Mapping& operator=(Mapping&& o) noexcept {
    std::swap(words_, o.words_);
    std::swap(range_, o.range_);
    return *this;
  }
  ~Mapping();
  std::span<uint64_t> words() const { return words_; }
  /// Whether the file held all that was accessed.
  bool isWhole() const { return !range_ || range_->isWhole(); }

 private:
  std::span<uint64_t> words_;
  std::unique_ptr<MappedRange> range_;
};

struct SharedCountersOptions {
  /// Who may read: 0600 for the owner alone, 0640 or 0644 for others too. Nobody else ever writes.
  mode_t mode = 0600;
  /// Where a corruption file goes; none is written to an empty path. Text and octets of a damaged
  /// table: a line with the text, a line "octets: " with their number, and the octets.
  std::string corruptionFile = {};
  /// Whether this process counts: one does at a time.
  bool counts = true;
};

/// The table of message counters in POSIX shared memory, where it outlives the process.
class SharedCounters final : public Macsec::Brine::CounterMemory {
 public:
  /// `name` is that of shm_open(3), as in "/macsecd-counters". Throws `std::system_error` if it
  /// can't be opened, belongs to somebody else, or another process counts there.
  explicit SharedCounters(std::string name, SharedCountersOptions options = {});

  /// Maps all that the table may ever need; the system gives memory for what is written. Memory of
  /// another size gives way to a new one. After some losses (`isWhole`) it is memory of this
  /// process.
  std::span<uint64_t> attach(size_t least, size_t most) override;
  void detach() override;
  bool isWhole() const override { return mapping_.isWhole(); }
  void corruptionFileIs(std::string_view text, std::span<uint8_t const> octets) override;

  /// Takes the memory away from under its name; who has it goes on.
  static void remove(std::string const& name);

 private:
  void open();
  void create(size_t octets);
  size_t size() const;

  std::string const name_;
  SharedCountersOptions const options_;
  Descriptor memory_;
  Mapping mapping_;
  unsigned losses_ = 0;
  Macsec::Brine::ProcessCounterMemory own_;
};

/// A table in shared memory of this name. Where that can't be had, one in the memory of this
/// process, and the log says why.
Vesk::Ptr<Macsec::Brine::MessageCounters> messageCountersIn(std::string const& name);

/// A look at the table of another process. It sees what is counted on, but not a table that takes
/// the place of this one: a new look does. One that is cut short under it is damaged.
class SharedCounterView {
 public:
  /// Throws `std::system_error` if there is no such memory or it may not be read.
  explicit SharedCounterView(std::string const& name);
  Macsec::Brine::MessageCounterReader reader() const {
    return Macsec::Brine::MessageCounterReader(mapping_.words());
  }

 private:
  Mapping mapping_;
};

}  // namespace Linux
