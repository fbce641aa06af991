#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "runtime/TimerHeap.h"
#include "runtime/TimerLane.h"

namespace Zorn {

/// Which of many timers is due next. It looks at no timer to say so: with thousands of them, each
/// lies on a page of its own. A timer has a slot from its first arming on, and what is kept of it
/// lies under its slot, close together.
///
/// Nearly all timers have one of a few short periods: those of one period wait in a lane, where
/// each comes behind all others. What fits no lane, and what is due late, waits in a heap.
class TimerQueue {
 public:
  using Slot = uint32_t;
  using Due = TimerDue;
  static constexpr Slot kNoSlot = TimerPlace::kNoSlot;

  TimerQueue() : heap_(Moved{this}) {}
  TimerQueue(TimerQueue const&) = delete;
  TimerQueue& operator=(TimerQueue const&) = delete;

  Slot slotIs(void* timer);
  /// Its timer isn't armed any more.
  void slotDel(Slot slot);
  void* timer(Slot slot) const { return slots_[slot].timer; }

  bool empty() const { return size_ == 0; }
  size_t size() const { return size_; }
  /// There must be one, here and below.
  Due const& first() const { return firstOf(first_).due; }
  Slot firstSlot() const { return firstOf(first_).slot; }
  /// Anew, or for another time than before.
  void arm(Slot slot, Due const& due);
  void disarm(Slot slot);

 private:
  static constexpr uint8_t kLanes = 4;
  static constexpr uint8_t kHeap = kLanes;
  static constexpr uint8_t kNowhere = 0xff;
  // So many seconds behind the first one it is late.
  static constexpr double kLate = 8.0;

  struct Entry {
    void* timer;
    uint64_t number : 56;  // in its lane, or index in the heap
    uint64_t line : 8;     // a lane, the heap, or nowhere
  };
  struct Moved {
    TimerQueue* queue;
    void operator()(Slot slot, uint64_t index) const { queue->entryIs(slot, kHeap, index); }
  };

  void entryIs(Slot slot, uint8_t line, uint64_t number);
  uint8_t lineFor(Due const& due) const;
  void join(uint8_t line, TimerPlace const& place);
  void leave(uint8_t line, uint64_t number);
  TimerPlace const& firstOf(uint8_t line) const {
    return line == kHeap ? heap_.first() : lanes_[line].first();
  }
  bool isEmpty(uint8_t line) const { return line == kHeap ? heap_.empty() : lanes_[line].empty(); }
  void findFirst();

  std::array<TimerLane, kLanes> lanes_;
  TimerHeap<Moved> heap_;
  std::vector<Entry> slots_;
  std::vector<Slot> free_;
  size_t size_ = 0;
  uint8_t first_ = kHeap;  // the line whose first one is due next
};

}  // namespace Zorn
