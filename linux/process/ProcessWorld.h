#pragma once

#include <functional>
#include <optional>

#include "runtime/Log.h"
#include "runtime/World.h"

namespace Linux {

/// The world of a real process with one switch: the kernel's clock and OpenSSL's random source.
class ProcessWorld final : public Vesk::World {
 public:
  using Syslog = std::function<void(Vesk::LogMessage const&)>;

  /// `syslog` takes the messages to where the operator reads them.
  explicit ProcessWorld(Syslog syslog) : syslog_(std::move(syslog)) {}

  /// Seconds since the machine was started, times of suspension included (CLOCK_BOOTTIME): the
  /// times in a tree that outlives the process go on to mean what they meant.
  double now() const override;
  /// What the machine takes for the time now (CLOCK_REALTIME).
  double wallTime() const override;
  /// A turn of the loop has ended, and until the next one ends the time is that at which it is
  /// first asked for. Without any call of this it runs on. What a turn does happens at one time,
  /// and a flood of frames doesn't ask the kernel for it again and again.
  void turnEnds();
  int rand() override;
  /// From the generator of OpenSSL's provider for what is private. Throws `std::runtime_error` if
  /// it gives none.
  void randomBytes(std::span<uint8_t> out) override;
  void syslog(Vesk::LogMessage const& message) override { syslog_(message); }
  void trace(Vesk::TraceRecord const& record) override {
    if (trace_) trace_(record);
  }
  /// Where trace statements go; nowhere for null.
  void traceTo(std::function<void(Vesk::TraceRecord const&)> trace) { trace_ = std::move(trace); }
  /// Ends the process at once: what it has written is pushed out, and nothing is destroyed under
  /// the handlers that still run.
  [[noreturn]] void exit(int status) override;
  int fipsModeSet(int on) override;
  void randCleanup() override;

 private:
  Syslog syslog_;
  bool hasTurns_ = false;
  mutable std::optional<double> turnTime_;
  std::function<void(Vesk::TraceRecord const&)> trace_;
};

}  // namespace Linux
