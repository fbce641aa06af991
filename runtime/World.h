#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <vector>

namespace Vesk {

struct LogMessage;
struct TraceRecord;
struct AttributeWrite;
class AttributeFollower;
class RateLimits;

/// What the runtime asks of the current world at each write and each attachment.
struct WorldSwitches {
  bool writesAreLogged = false;
  bool visitsAreFiltered = true;
  bool objectsHaveHomes = true;
};

/// What belongs to one switch and lies outside its trees, as its host sets it: clock, randomness,
/// where syslog messages, traces and the attribute log go, and what each room keeps for it. Nothing
/// that a switch does happens outside of its world, which is current while the switch runs
/// (`WorldScope`): a process with one switch can enter its world for good, `Macsecd::Host` enters
/// its own in each call. A world outlives all that was made in it.
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
  /// Takes each effective write while the attribute log is on.
  virtual void attributeWritten(AttributeWrite const& write) { static_cast<void>(write); }
  /// Pushes out what `attributeWritten` still holds.
  virtual void flushAttributes() {}
  /// Whether the world itself takes the attribute log; off at first.
  bool attributeLog() const { return attributeLog_; }
  void attributeLogIs(bool on);
  /// Who follows the attribute log as well; each has to leave before it ends.
  std::vector<AttributeFollower*> const& attributeFollowers() const { return followers_; }
  void attributeFollowerIs(AttributeFollower& follower);
  void attributeFollowerDel(AttributeFollower& follower);

  /// True at first: notifiees with a key are visited for that key alone, and a notifiee is called
  /// only for what it overrides. False makes every notifiee that enters a list be called for
  /// everything.
  void visitsAreFilteredIs(bool filtered) { switches_.visitsAreFiltered = filtered; }
  /// True at first: the objects of an interface live together (`runtime/Home.h`). False has what is
  /// made from then on come from the heap.
  void objectsHaveHomesIs(bool haveHomes) { switches_.objectsHaveHomes = haveHomes; }
  WorldSwitches const& switches() const { return switches_; }

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

  /// What a room keeps for this switch: one `T`, made when it is asked for first.
  template <class T>
  T& kept() {
    std::shared_ptr<void>& value = (*kept_)[&keyOf<T>];
    if (!value) value = std::make_shared<T>();
    return *static_cast<T*>(value.get());
  }

 protected:
  /// A world that takes another one's place for a while, with all that the rooms keep there.
  explicit World(World& other);

 private:
  // One address per type. The order of `std::type_info` isn't one on every machine.
  template <class T>
  static inline char keyOf = 0;
  using Kept = std::map<void const*, std::shared_ptr<void>>;

  void writesAreLoggedAsAsked();

  std::unique_ptr<RateLimits> rateLimits_;
  std::shared_ptr<Kept> kept_;
  std::vector<AttributeFollower*> followers_;
  bool attributeLog_ = false;
  WorldSwitches switches_;
};

/// The world of the switch that runs now. It is a broken invariant to ask, to write an attribute,
/// to log or to trace outside of any world.
World& world();
/// Whether there is one.
bool hasWorld();

namespace Detail {
/// Those of the current world. Without a world, they have a write look for one.
extern WorldSwitches const* switches;
}  // namespace Detail

/// Makes a world current for as long as the scope lives.
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
