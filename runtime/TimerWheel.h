#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

#include "runtime/StateMachine.h"
#include "runtime/TimerQueue.h"
#include "runtime/World.h"

namespace Zorn {

/// The time of a timer that isn't armed.
constexpr double never = std::numeric_limits<double>::infinity();

/// Drives every period of the protocol. The host makes it, passes it to the state machines, and
/// runs it from its main loop. Timers due at one time fire in the order in which they were armed,
/// each in the world of the wheel.
class TimerWheel : public Vesk::PtrInterface {
 public:
  class NotifieeConst;
  class Notifiee;

  /// In the current world, or in the one given.
  explicit TimerWheel(Vesk::World& world = Vesk::world()) : world_(world) {}
  ~TimerWheel() override;

  /// The time of the timer that is due next; `never` when none is armed.
  double nextTime() const;
  /// One pass: fires, one at a time, the timers that are due by the `now()` of its start and
  /// were armed before it. Returns how many fired.
  size_t runDue();
  /// Fires the timer that is due next if its time isn't after `now()`. False if none was due.
  bool runOne();
  size_t armed() const { return queue_.size(); }

 private:
  NotifieeConst* first() const;
  void arm(NotifieeConst& timer, double time);
  void disarm(NotifieeConst const& timer);
  void fireFirst();

  Vesk::World& world_;
  TimerQueue queue_;
  uint64_t armings_ = 0;
  // The time of the running pass. What is armed in it for an earlier time stands behind all that
  // the pass has to fire.
  double passTime_ = -never;
};

/// A timer: a reactor on the wheel. A new one is not armed.
class TimerWheel::NotifieeConst : public Vesk::PtrInterface {
 public:
  /// The time last given; `onTime` doesn't change it.
  double time() const { return time_; }
  /// Arms the timer for the absolute time `t` in seconds, also if that is the time that it already
  /// has; the last time given holds, and `onTime` runs at most once for each arming. `never`
  /// disarms it.
  void timeMinIs(double t);
  Vesk::Ptr<TimerWheel> const& wheel() const { return wheel_; }
  /// The logic's test: `time` is a finite number.
  bool isArmed() const { return time_ <= std::numeric_limits<double>::max(); }
  virtual void onTime() {}
  /// Whose handlers it calls, if that is a state machine.
  virtual Vesk::StateMachine* machine() const { return nullptr; }

  void isRegisteredNotifieeIs(bool on);
  void retire();

 protected:
  explicit NotifieeConst(Vesk::Ptr<TimerWheel> wheel);
  ~NotifieeConst() override;

 private:
  friend class TimerWheel;
  // In front, where it fills a gap.
  TimerQueue::Slot slot_ = TimerQueue::kNoSlot;
  Vesk::Ptr<TimerWheel> wheel_;
  double time_ = never;
};

class TimerWheel::Notifiee : public TimerWheel::NotifieeConst {
 protected:
  using NotifieeConst::NotifieeConst;
};

/// A timer that belongs to an `Owner`.
template <class Owner, class Base = TimerWheel::Notifiee>
class TimerReactor : public Base {
 public:
  TimerReactor(Owner& owner, Vesk::Ptr<TimerWheel> wheel)
      : Base(std::move(wheel)), owner_(&owner) {}

  Owner& owner() const { return *owner_; }
  Vesk::StateMachine* machine() const override {
    if constexpr (std::is_base_of_v<Vesk::StateMachine, Owner>) return owner_;
    return nullptr;
  }
  void ownerDel() { owner_ = nullptr; }

 private:
  Owner* owner_;
};

}  // namespace Zorn
