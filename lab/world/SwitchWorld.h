#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "lab/world/Clock.h"
#include "lab/world/LocalClock.h"
#include "lab/world/Random.h"
#include "runtime/Entity.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

namespace Lab {

/// Unwinds out of a switch whose process ended itself.
struct SwitchExit {
  int status;
};

/// Where a world passes on what a switch says. What nobody set is dropped.
struct WorldSinks {
  std::function<void(Vesk::LogMessage const&)> syslog;
  std::function<void(Vesk::AttributeWrite const&)> attribute;
  std::function<void(Vesk::TraceRecord const&)> trace;
};

/// The world of one simulated switch: virtual time, and random numbers that the seed decides.
class SwitchWorld final : public Vesk::World {
 public:
  /// `owner` tells the switches of one simulation apart. `firstDelays` are the first results of
  /// `rand()`.
  SwitchWorld(Clock const& clock, uint32_t seed, uint32_t owner, std::vector<uint32_t> firstDelays)
      : clock_(clock),
        delays_(seed, Stream::delays, owner),
        keys_(seed, Stream::keys, owner),
        firstDelays_(std::move(firstDelays)) {}

  WorldSinks sinks;

  double now() const override { return local_.shown(clock_.now); }
  /// The time of the simulation, and that at which this switch's clock shows this one.
  double simulationNow() const { return clock_.now; }
  double simulationTimeOf(double shown) const { return local_.whenShown(shown); }
  void clockRateIs(double rate) { local_.rateIs(clock_.now, rate); }
  int rand() override {
    if (used_ < firstDelays_.size()) return static_cast<int>(firstDelays_[used_++]);
    return static_cast<int>(delays_.number() >> 1);
  }
  void randomBytes(std::span<uint8_t> out) override { keys_.fill(out); }
  void syslog(Vesk::LogMessage const& message) override {
    if (sinks.syslog && !ended_) sinks.syslog(message);
  }
  void attributeWritten(Vesk::AttributeWrite const& write) override {
    if (sinks.attribute && !ended_) sinks.attribute(write);
  }
  void trace(Vesk::TraceRecord const& record) override {
    if (sinks.trace && !ended_) sinks.trace(record);
  }
  /// What is still on its way out of a process that has ended reaches nobody.
  void exit(int status) override {
    if (std::exchange(ended_, true)) return;
    throw SwitchExit{status};
  }
  /// A new process begins, which remembers nothing of what the former one has logged.
  void processBegins() {
    ended_ = false;
    rateLimits().clear();
  }
  /// The crypto library is that of the whole simulation, so here the mode is but a matter of
  /// success.
  int fipsModeSet(int on) override { return on && !hasFipsProvider ? 0 : 1; }

  /// Whether the machine of this switch could run in FIPS mode.
  bool hasFipsProvider = true;

 private:
  Clock const& clock_;
  LocalClock local_;
  Random delays_;
  Random keys_;
  std::vector<uint32_t> firstDelays_;
  size_t used_ = 0;
  bool ended_ = false;
};

}  // namespace Lab
