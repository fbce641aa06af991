#include "runtime/TimerQueue.h"

#include "runtime/Assert.h"

namespace Zorn {

namespace {

constexpr uint64_t kMostNumbers = uint64_t{1} << 56;

}  // namespace

TimerQueue::Slot TimerQueue::slotIs(void* timer) {
  if (free_.empty()) {
    slots_.push_back({timer, 0, kNowhere});
    return static_cast<Slot>(slots_.size() - 1);
  }
  Slot const slot = free_.back();
  free_.pop_back();
  slots_[slot] = {timer, 0, kNowhere};
  return slot;
}

void TimerQueue::slotDel(Slot slot) {
  disarm(slot);
  slots_[slot].timer = nullptr;
  free_.push_back(slot);
}

void TimerQueue::arm(Slot slot, Due const& due) {
  disarm(slot);
  uint8_t const line = lineFor(due);
  join(line, {due, slot});
  if (size_++ == 0 || due < first()) first_ = line;
}

void TimerQueue::disarm(Slot slot) {
  Entry& entry = slots_[slot];
  if (entry.line == kNowhere) return;
  auto const line = static_cast<uint8_t>(entry.line);
  leave(line, entry.number);
  entry.line = kNowhere;
  --size_;
  if (line == first_) findFirst();
}

void TimerQueue::entryIs(Slot slot, uint8_t line, uint64_t number) {
  slots_[slot].line = line;
  slots_[slot].number = number % kMostNumbers;
}

// Behind the latest one that is due before; so each period finds a lane of its own.
uint8_t TimerQueue::lineFor(Due const& due) const {
  if (empty() || due.time > first().time + kLate) return kHeap;
  uint8_t best = kHeap;
  for (uint8_t lane = 0; lane < kLanes; ++lane) {
    bool const isFree = lanes_[lane].empty();
    if (!isFree && !(lanes_[lane].lastDue() < due)) continue;
    bool const isBetter = best == kHeap || lanes_[best].empty() ||
                          (!isFree && lanes_[best].lastDue() < lanes_[lane].lastDue());
    if (isBetter) best = lane;
  }
  return best;
}

void TimerQueue::join(uint8_t line, TimerPlace const& place) {
  if (line == kHeap) return heap_.add(place);
  entryIs(place.slot, line, lanes_[line].append(place));
}

void TimerQueue::leave(uint8_t line, uint64_t number) {
  if (line == kHeap) return heap_.erase(static_cast<size_t>(number));
  TimerLane& lane = lanes_[line];
  lane.leave(number);
  if (lane.isSparse()) lane.tidy([&](Slot slot, uint64_t to) { entryIs(slot, line, to); });
}

void TimerQueue::findFirst() {
  first_ = kHeap;
  for (uint8_t lane = 0; lane < kLanes; ++lane) {
    if (lanes_[lane].empty()) continue;
    if (isEmpty(first_) || lanes_[lane].first().due < firstOf(first_).due) first_ = lane;
  }
}

}  // namespace Zorn
