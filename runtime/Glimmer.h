#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The ring-buffer trace: cheap enough to leave on, read after the fact. A trace file holds a ring
/// for each level; a statement puts its number and its arguments there, and its format is kept
/// once.
namespace Glimmer {

class TraceFile;

/// What is known of one trace statement: where it stands, and its format with one %s for each
/// argument.
class MsgDesc {
 public:
  bool isRegistered() const { return id_ != 0; }
  /// The number by which the rings name the statement; 0 before its first use.
  uint32_t id() const { return id_; }
  void registerIs(char const* sourceName, int line, std::string const& format);

  struct Entry {
    char const* sourceName;
    int line;
    std::string format;
  };
  /// All statements used so far; the statement with number n is entry n - 1.
  static std::vector<Entry> const& entries();

 private:
  uint32_t id_ = 0;
};

/// The ring of one level. The newest messages overwrite the oldest.
class RingBuf {
 public:
  explicit RingBuf(std::span<uint8_t> memory) : memory_(memory) {}

  /// Longest argument; a longer one is cut.
  static constexpr size_t kArgumentMax = 255;

  void startMsg(TraceFile& file, uint32_t id);
  void argument(std::string_view text);
  void endMsg();

  /// The messages that are whole in the ring, oldest first, as text.
  std::vector<std::string> messages() const;

 private:
  struct Message {
    uint32_t id;
    std::vector<std::string> arguments;
  };
  void put(std::span<uint8_t const> bytes);
  uint8_t& at(uint64_t position) const {
    return memory_[static_cast<size_t>(position % memory_.size())];
  }
  Message messageAt(uint64_t position) const;
  uint32_t sizeAt(uint64_t position) const;

  std::span<uint8_t> memory_;
  uint64_t oldest_ = 0;
  uint64_t end_ = 0;
  std::array<uint8_t, 4096> building_;
  size_t built_ = 0;
};

/// The rings of a process, in memory that the host provides (it may be a mapped file).
class TraceFile {
 public:
  static constexpr size_t kLevels = 10;

  explicit TraceFile(std::span<uint8_t> memory);

  RingBuf& ring(uint8_t level) { return rings_[level]; }

  /// The trace file of the process; null when there is none, and statements then do nothing.
  static TraceFile* current();
  static void currentIs(TraceFile* file);

 private:
  std::vector<RingBuf> rings_;
};

}  // namespace Glimmer
