#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Zorn {

/// Which of many timers is due next. It looks at no timer to say so: with thousands of them, each
/// lies on a page of its own. A timer has a slot from its first arming on, and what is kept of it
/// lies under its slot, close together.
class TimerHeap {
 public:
  using Slot = uint32_t;
  static constexpr Slot kNoSlot = UINT32_MAX;
  /// Those of one time go in the order in which they were armed.
  struct Due {
    double time;
    uint64_t arming;
    bool operator<(Due const& o) const {
      return time != o.time ? time < o.time : arming < o.arming;
    }
  };

  Slot slotIs(void* timer);
  /// Its timer isn't armed any more.
  void slotDel(Slot slot);
  void* timer(Slot slot) const { return slots_[slot].timer; }

  bool empty() const { return heap_.empty(); }
  size_t size() const { return heap_.size(); }
  Due const& first() const { return heap_.front().due; }
  Slot firstSlot() const { return heap_.front().slot; }
  /// Anew, or for another time than before.
  void arm(Slot slot, Due const& due);
  void disarm(Slot slot);

 private:
  static constexpr uint32_t kNowhere = UINT32_MAX;
  static constexpr uint32_t kChildren = 4;
  struct Place {
    Due due;
    Slot slot;
  };
  struct Entry {
    void* timer;
    uint32_t place;
  };
  void put(uint32_t at, Place const& place);
  void sift(uint32_t at);
  uint32_t siftUp(uint32_t at);
  void siftDown(uint32_t at);
  uint32_t firstOf(uint32_t children) const;

  std::vector<Place> heap_;
  std::vector<Entry> slots_;
  std::vector<Slot> free_;
};

}  // namespace Zorn
