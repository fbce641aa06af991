#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Zorn {

/// When a timer is due. Those of one time go in the order in which they were armed.
struct TimerDue {
  double time;
  uint64_t arming;
  bool operator<(TimerDue const& o) const {
    return time != o.time ? time < o.time : arming < o.arming;
  }
};

/// The slot of a timer, and when it is due. One without a slot has left.
struct TimerPlace {
  static constexpr uint32_t kNoSlot = UINT32_MAX;
  TimerDue due;
  uint32_t slot;
};

/// Timers that were armed in the order in which they are due, as those of one period are: each
/// comes behind all others and has a number, one more than the one before it.
class TimerLane {
 public:
  bool empty() const { return begin_ == end_; }
  TimerPlace const& first() const { return at(begin_); }
  /// Of the newest one, which may have left.
  TimerDue const& lastDue() const { return lastDue_; }
  TimerPlace const& at(uint64_t number) const { return ring_[indexOf(number)]; }

  /// Its number.
  uint64_t append(TimerPlace const& place);
  void leave(uint64_t number);
  /// Whether most places have been left.
  bool isSparse() const { return left_ > kFewLeft && left_ > (end_ - begin_) / 2; }
  /// Closes the ranks, and tells each timer's new number by `moved(slot, number)`.
  template <class Moved>
  void tidy(Moved moved) {
    uint64_t to = begin_;
    for (uint64_t from = begin_; from != end_; ++from) {
      if (at(from).slot == TimerPlace::kNoSlot) continue;
      moved(at(from).slot, to);
      place(to++) = at(from);
    }
    end_ = to;
    left_ = 0;
  }

 private:
  static constexpr uint64_t kFewLeft = 64;

  TimerPlace& place(uint64_t number) { return ring_[indexOf(number)]; }
  size_t indexOf(uint64_t number) const { return static_cast<size_t>(number & mask_); }
  void grow();

  std::vector<TimerPlace> ring_;  // none, or a power of two
  uint64_t mask_ = 0;             // for a place in the ring
  uint64_t begin_ = 0;
  uint64_t end_ = 0;
  TimerDue lastDue_{};
  uint64_t left_ = 0;
};

}  // namespace Zorn
