#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "runtime/Glimmer.h"
#include "runtime/Text.h"

namespace Vesk {

/// Levels in use: 8 entry of a handler and fine detail; 3 decisions and their reasons; 1 the few
/// transitions that matter most; 2, 4, 6 rare detail.
using FacilityLevel = uint8_t;

/// A named switch board for the trace statements of one source unit, made at load and never
/// destroyed. Units may share a name; levels are set by name, for the stream of one world and for
/// the ring buffers of the process.
class TraceHandle {
 public:
  explicit TraceHandle(char const* name);

  char const* name() const { return name_; }
  /// True if a statement of this level may go anywhere: the load and the branch that a disabled
  /// statement costs.
  bool isEnabled(FacilityLevel level) const { return levels_ >> level & 1; }
  /// Whether it goes to the trace sink of the current world.
  bool goesToStream(FacilityLevel level) const;
  bool goesToRing(FacilityLevel level) const;

  /// The names in use, each once, in the order of the alphabet.
  static std::vector<std::string> names();
  /// Sends the levels of `levels` (bit n: level n) of every handle named `name`, or of all handles
  /// for an empty name, to the trace sink of the current world, and no other levels of theirs.
  static void streamLevelsIs(std::string_view name, uint16_t levels);
  /// The same for the ring buffers, which take all levels while a trace file exists.
  static void ringLevelsIs(uint16_t levels);

 private:
  friend class StreamLevels;

  void streamsChange(uint16_t former, uint16_t levels);
  void levelsAreCounted();

  char const* name_;
  // What goes anywhere: to the stream of some world, or to the ring buffers.
  uint16_t levels_ = 0;
  // In how many worlds each level goes to the stream.
  std::array<uint32_t, 10> streams_{};
  TraceHandle* next_;
};

/// Every level, for `TraceHandle::streamLevelsIs`.
constexpr uint16_t kAllTraceLevels = 0x3ff;

/// One trace statement as it goes to the trace sink of the world.
struct TraceRecord {
  char const* handle;
  FacilityLevel level;
  char const* file;
  int line;
  /// The full signature of the enclosing function, which stands at the front of `text` too.
  char const* function;
  std::string const& text;
};

/// Collects the text of one enabled trace statement for the stream.
class TraceHelper {
 public:
  /// A helper when the stream of this handle takes the level, else one that tests false.
  static TraceHelper createIfEnabled(TraceHandle const& handle, FacilityLevel level) {
    return TraceHelper(handle, level);
  }
  explicit operator bool() const { return handle_.goesToStream(level_); }
  std::ostream& stream() { return stream_; }
  /// Ends the statement: the text goes to the world.
  void trace(char const* file, int line, char const* function);

 private:
  TraceHelper(TraceHandle const& handle, FacilityLevel level) : handle_(handle), level_(level) {}

  TraceHandle const& handle_;
  FacilityLevel level_;
  std::ostringstream stream_;
};

namespace Detail {

// A constant array is a string literal; a buffer, which may hold another text next time, is not.
template <class T>
constexpr bool isLiteral = std::is_array_v<std::remove_reference_t<T>>&&
    std::is_const_v<std::remove_extent_t<std::remove_reference_t<T>>>;

template <class T>
void addFormatPiece(std::string& format, std::remove_reference_t<T> const& piece) {
  if constexpr (isLiteral<T>) {
    format += piece;
  } else {
    format += "%s";
  }
}

template <class T>
void addRingArgument(Glimmer::RingBuf& ring, std::remove_reference_t<T> const& piece) {
  if constexpr (!isLiteral<T>) {
    std::ostringstream out;
    streamText(out, piece);
    ring.argument(std::move(out).str());
  }
}

// Both ways of one enabled statement. A string literal is a piece of the format, everything else
// an argument.
template <class... Pieces>
[[gnu::noinline, gnu::cold]] void traceBothWays(TraceHandle const& handle, FacilityLevel level,
                                                Glimmer::MsgDesc& desc, char const* file, int line,
                                                char const* function, Pieces&&... pieces) {
  if (TraceHelper helper = TraceHelper::createIfEnabled(handle, level)) {
    helper.stream() << function;
    (streamText(helper.stream(), pieces), ...);
    helper.trace(file, line, function);
  }
  Glimmer::TraceFile* traceFile = Glimmer::TraceFile::current();
  if (!traceFile || !handle.goesToRing(level)) return;
  if (!desc.isRegistered()) {
    std::string format = function;
    (addFormatPiece<Pieces>(format, pieces), ...);
    desc.registerIs(file, line, format);
  }
  Glimmer::RingBuf& ring = traceFile->ring(level);
  ring.startMsg(*traceFile, desc.id());
  (addRingArgument<Pieces>(ring, pieces), ...);
  ring.endMsg();
}

}  // namespace Detail

}  // namespace Vesk

/// Traces the signature of the enclosing function and then the pieces. The source unit names its
/// handle `traceHandle`.
#define VESK_TRACE(level, ...)                                                           \
  do {                                                                                   \
    if (traceHandle.isEnabled(level)) [[unlikely]] {                                     \
      static ::Glimmer::MsgDesc glimmerDesc;                                             \
      ::Vesk::Detail::traceBothWays(traceHandle, level, glimmerDesc, __FILE__, __LINE__, \
                                    __PRETTY_FUNCTION__, __VA_ARGS__);                   \
    }                                                                                    \
  } while (false)
