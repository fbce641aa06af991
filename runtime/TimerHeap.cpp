#include "runtime/TimerHeap.h"

#include <algorithm>

#include "runtime/Assert.h"

namespace Zorn {

TimerHeap::Slot TimerHeap::slotIs(void* timer) {
  if (free_.empty()) {
    slots_.push_back({timer, kNowhere});
    return static_cast<Slot>(slots_.size() - 1);
  }
  Slot const slot = free_.back();
  free_.pop_back();
  slots_[slot] = {timer, kNowhere};
  return slot;
}

void TimerHeap::slotDel(Slot slot) {
  disarm(slot);
  slots_[slot].timer = nullptr;
  free_.push_back(slot);
}

void TimerHeap::arm(Slot slot, Due const& due) {
  uint32_t at = slots_[slot].place;
  if (at == kNowhere) {
    at = static_cast<uint32_t>(heap_.size());
    heap_.emplace_back();
  }
  put(at, {due, slot});
  sift(at);
  VESK_DEBUG_ASSERT(heap_[slots_[slot].place].slot == slot);
}

void TimerHeap::disarm(Slot slot) {
  uint32_t const at = slots_[slot].place;
  if (at == kNowhere) return;
  VESK_ASSERT(heap_[at].slot == slot);
  slots_[slot].place = kNowhere;
  Place const last = heap_.back();
  heap_.pop_back();
  if (at == heap_.size()) return;
  put(at, last);
  sift(at);
}

void TimerHeap::put(uint32_t at, Place const& place) {
  heap_[at] = place;
  slots_[place.slot].place = at;
}

void TimerHeap::sift(uint32_t at) { siftDown(siftUp(at)); }

uint32_t TimerHeap::siftUp(uint32_t at) {
  Place const place = heap_[at];
  uint32_t const begin = at;
  for (uint32_t parent; at > 0; at = parent) {
    parent = (at - 1) / kChildren;
    if (!(place.due < heap_[parent].due)) break;
    put(at, heap_[parent]);
  }
  if (at != begin) put(at, place);
  return at;
}

void TimerHeap::siftDown(uint32_t at) {
  Place const place = heap_[at];
  uint32_t const begin = at;
  for (uint32_t children; (children = at * kChildren + 1) < heap_.size();) {
    uint32_t const child = firstOf(children);
    if (!(heap_[child].due < place.due)) break;
    put(at, heap_[child]);
    at = child;
  }
  if (at != begin) put(at, place);
}

// Of the children of one place, which begin there, the one that is due first.
uint32_t TimerHeap::firstOf(uint32_t children) const {
  auto const end = std::min(children + kChildren, static_cast<uint32_t>(heap_.size()));
  uint32_t first = children;
  for (uint32_t child = children + 1; child < end; ++child) {
    if (heap_[child].due < heap_[first].due) first = child;
  }
  return first;
}

}  // namespace Zorn
