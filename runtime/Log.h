#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include "runtime/String8.h"
#include "runtime/Text.h"

namespace Vesk {

/// Severities of syslog (RFC 5424, 6.2.1).
enum class LogSeverity : uint8_t {
  emergency = 0,
  alert = 1,
  critical = 2,
  error = 3,
  warning = 4,
  notice = 5,
  informational = 6,
  debug = 7,
};

/// The recommended action of a message that needs none.
extern char const NoActionRequired[];

class LogHandle;

/// One message as it goes to the syslog sink of the world.
struct LogMessage {
  LogHandle const& handle;
  std::vector<std::string> const& arguments;
  std::string const& text;
  /// Identifies the repeats of one message, see `LogHandle::idHash`.
  uint32_t hash;
  uint8_t facility;
};

/// A message of the system, made once at load. Nothing of it is destroyed at the end of a process,
/// since handlers may still log then.
class LogHandle {
 public:
  /// `format` holds one %s for each argument. `interval`, in seconds, is the time within which
  /// repeats with the same leading arguments are dropped; 0.0 drops none. `reserved` is kept and
  /// not used. `rateLimitArgs` is how many leading arguments tell one message from another.
  LogHandle(char const* name, LogSeverity severity, char const* format, char const* explanation,
            char const* recommendedAction, double interval, double reserved,
            uint8_t rateLimitArgs = 255)
      : name_(name),
        severity_(severity),
        format_(format),
        explanation_(explanation),
        recommendedAction_(recommendedAction),
        interval_(interval),
        reserved_(reserved),
        rateLimitArgs_(rateLimitArgs) {}

  char const* name() const { return name_; }
  LogSeverity severity() const { return severity_; }
  char const* format() const { return format_; }
  char const* explanation() const { return explanation_; }
  char const* recommendedAction() const { return recommendedAction_; }
  double interval() const { return interval_; }
  double reserved() const { return reserved_; }
  uint8_t rateLimitArgs() const { return rateLimitArgs_; }
  uint32_t idHash() const { return hashBytes(name_, std::char_traits<char>::length(name_)); }

  /// Whether a message with this hash may go out now: true if none with the same hash went out
  /// within the interval.
  bool okToLog(uint32_t hash) const;
  /// Hands the finished text to the world.
  void log(uint32_t hash, std::string const& text, uint8_t facility,
           std::vector<std::string> const& arguments) const;

 private:
  char const* name_;
  LogSeverity severity_;
  char const* format_;
  char const* explanation_;
  char const* recommendedAction_;
  double interval_;
  double reserved_;
  uint8_t rateLimitArgs_;
};

/// When each message last went out. Entries older than their interval are dropped.
class RateLimits {
 public:
  /// True, and remembered, unless a message with `hash` went out less than `interval` seconds ago.
  bool take(uint32_t hash, double interval);
  size_t size() const { return until_.size(); }
  /// Nothing has gone out yet, as where a process begins.
  void clear() { until_.clear(); }

 private:
  void dropOld(double now);

  std::unordered_map<uint32_t, double> until_;
  double nextSweep_ = 0.0;
};

/// Logs with the arguments already in text form.
void logTexts(LogHandle const& handle, std::vector<std::string> const& arguments);

/// Logs a message: repeats with the same leading arguments are limited, others are not.
template <class... Args>
void log(LogHandle const& handle, Args const&... args) {
  [[maybe_unused]] auto text = [](auto const& arg) {
    std::ostringstream out;
    streamText(out, arg);
    return std::move(out).str();
  };
  logTexts(handle, {text(args)...});
}

}  // namespace Vesk
