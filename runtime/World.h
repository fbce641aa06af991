#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Vesk {

struct LogMessage;
struct TraceRecord;
struct AttributeWrite;
class AttributeFollower;
class RateLimits;

/// The world outside one switch, as its host sets it: clock, randomness, and where syslog messages,
/// traces and the attribute log go. A process with one switch has one world for good; a process
/// with several makes the world of a switch current while that switch runs (`WorldScope`).
class World {
 public:
  World();
  virtual ~World();
  World(World const&) = delete;
  World& operator=(World const&) = delete;

  /// Seconds on a clock that never goes back and goes on across restarts of the process.
  virtual double now() const = 0;
  /// The seconds since 1970, for what people and other machines read; where there is no other
  /// clock, what `now()` has. It may jump.
  virtual double wallTime() const { return now(); }
  /// A pseudo-random number from 0 up, of at least 15 bits: for delays, not for keys.
  virtual int rand() = 0;
  /// Fills `out` with random bytes fit for keys.
  virtual void randomBytes(std::span<uint8_t> out) = 0;
  virtual void syslog(LogMessage const& message) = 0;
  virtual void trace(TraceRecord const& record) { static_cast<void>(record); }
  virtual void attributeWritten(AttributeWrite const& write) { static_cast<void>(write); }
  /// Pushes out what `attributeWritten` still holds.
  virtual void flushAttributes() {}
  /// Who follows the attribute log as well; each has to leave before it ends.
  std::vector<AttributeFollower*> const& attributeFollowers() const { return followers_; }
  void attributeFollowerIs(AttributeFollower& follower) { followers_.push_back(&follower); }
  void attributeFollowerDel(AttributeFollower& follower) { std::erase(followers_, &follower); }
  /// Ends the process of the switch. A real process doesn't come back from this; a simulated one
  /// may throw to unwind out of the switch.
  virtual void exit(int status) = 0;

  /// Sets the FIPS mode of the process's crypto library: 1 for on, 0 for off. Returns 0 on failure,
  /// another number otherwise. A world that knows no crypto library can't turn it on.
  virtual int fipsModeSet(int on) { return on ? 0 : 1; }
  /// Drops the random generators of the crypto library, which makes new ones when it needs them.
  virtual void randCleanup() {}

  /// What has been logged lately, for the rate limits of log handles.
  RateLimits& rateLimits() { return *rateLimits_; }

 private:
  std::unique_ptr<RateLimits> rateLimits_;
  std::vector<AttributeFollower*> followers_;
};

/// The world of the switch that runs now. A process that never set one lives in a world whose clock
/// stands at 0, whose random source fails the process, and whose sinks drop everything.
World& world();

/// Makes a world current for as long as it lives.
class WorldScope {
 public:
  explicit WorldScope(World& world);
  ~WorldScope();
  WorldScope(WorldScope const&) = delete;
  WorldScope& operator=(WorldScope const&) = delete;

 private:
  World* former_;
};

/// The current time in seconds. All times of timers are absolute times on this clock.
double now();

}  // namespace Vesk
