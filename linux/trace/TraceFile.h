#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/Result.h"
#include "linux/process/Descriptor.h"
#include "linux/process/Limits.h"
#include "linux/trace/TraceLayout.h"
#include "runtime/Trace.h"

namespace Linux {

/// A ring of trace statements in a mapped file of fixed size, 0600: the newest take the place of
/// the oldest. What has been added outlives the process, whatever ends it, and a further process
/// goes on behind it.
///
///     | head: what it is, octets begun, octets ended | a line for each statement, in a ring |
///
/// An addition counts its octets as begun, writes them, and counts them as ended. So a reader knows
/// which of the oldest octets may be gone, also when the process ended in between.
class TraceFile {
 public:
  static constexpr size_t kSize = Limits::kTraceFile;  ///< octets, all in all
  static constexpr size_t kMaxLine =
      Limits::kTraceLine;  ///< octets of a statement; what is longer is cut

  /// Opens the file, or makes it anew if it is no trace of this size. Throws `Fault` if it can't be
  /// had, or another process traces to it.
  explicit TraceFile(std::string const& path, size_t size = kSize);
  ~TraceFile();
  TraceFile(TraceFile const&) = delete;
  TraceFile& operator=(TraceFile const&) = delete;

  /// Adds a statement of this time, in seconds.
  void add(double time, Vesk::TraceRecord const& record);

 private:
  TraceHead& head() const;
  void putLine(std::string_view line);

  Descriptor file_;
  std::span<uint8_t> memory_;
  std::span<uint8_t> ring_;
};

/// A statement as it was added.
struct TracedStatement {
  double time = 0;
  unsigned level = 0;
  std::string handle;
  std::string place;  ///< "engine/MkaSm.cpp:52"
  std::string text;
};

/// The statements that are whole in the file, oldest first, whoever writes there meanwhile.
Macsecd::Result<std::vector<TracedStatement>> readTrace(std::string const& path);

}  // namespace Linux
