#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "runtime/Entity.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"
#include "runtime/World.h"
#include "tests/support/CommonWorld.h"

namespace Support {

/// A syslog message as a test sees it.
struct Logged {
  std::string name;
  std::vector<std::string> arguments;
  std::string text;
  friend bool operator==(Logged const&, Logged const&) = default;
};

/// A world with a clock that the test sets, first delays that it chooses, and random bytes that are
/// the same in every run.
class TestWorld : public Vesk::World {
 public:
  explicit TestWorld(uint64_t seed = 1)
      : World(CommonWorld::instance()), state_(seed * 0x9e3779b97f4a7c15u + 1) {}

  double now() const override { return time; }
  int rand() override {
    if (delays.empty()) return 0;
    int const delay = delays.front();
    delays.pop_front();
    return delay;
  }
  void randomBytes(std::span<uint8_t> out) override {
    if (nextRandom.size() >= out.size()) {
      for (uint8_t& byte : out) {
        byte = nextRandom.front();
        nextRandom.pop_front();
      }
      return;
    }
    for (uint8_t& byte : out) byte = static_cast<uint8_t>(next() >> 32);
  }
  void syslog(Vesk::LogMessage const& message) override {
    logs.push_back({message.handle.name(), message.arguments, message.text});
    handles.push_back(&message.handle);
  }
  void trace(Vesk::TraceRecord const& record) override { traces.push_back(record.text); }
  void attributeWritten(Vesk::AttributeWrite const& write) override {
    writes.push_back(write.attribute);
  }
  void exit(int status) override {
    exits.push_back(status);
    calls.push_back("exit(" + std::to_string(status) + ")");
  }
  int fipsModeSet(int on) override {
    if (whenFipsModeIsSet) whenFipsModeIsSet();
    calls.push_back("FIPS_mode_set(" + std::to_string(on) + ")");
    return fipsModeResult;
  }
  void randCleanup() override { calls.push_back("RAND_cleanup()"); }

  std::vector<std::string> logNames() const {
    std::vector<std::string> names;
    for (Logged const& log : logs) names.push_back(log.name);
    return names;
  }
  size_t logged(std::string const& name) const {
    size_t count = 0;
    for (Logged const& log : logs) count += log.name == name;
    return count;
  }
  /// How many traces hold this text.
  size_t traced(std::string const& text) const {
    size_t count = 0;
    for (std::string const& trace : traces) count += trace.find(text) != std::string::npos;
    return count;
  }

  double time = 0.0;
  std::deque<int> delays;
  /// Bytes that the random source gives before its own, when there are enough of them.
  std::deque<uint8_t> nextRandom;
  std::vector<Logged> logs;
  std::vector<Vesk::LogHandle const*> handles;
  std::vector<std::string> traces;
  /// The attributes written while the attribute log is on, in order.
  std::vector<std::string> writes;
  std::vector<int> exits;
  /// What the process and its crypto library were asked for, in order.
  std::vector<std::string> calls;
  /// Called before the FIPS mode is set.
  std::function<void()> whenFipsModeIsSet;
  /// What setting the FIPS mode returns; 0 is a failure.
  int fipsModeResult = 1;

 private:
  uint64_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return state_;
  }
  uint64_t state_;
};

}  // namespace Support
