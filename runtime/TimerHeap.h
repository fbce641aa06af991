#pragma once

#include <vector>

#include "runtime/TimerLane.h"

namespace Zorn {

/// Timers in any order. It tells where each has come to by `Moved::operator()(slot, index)`.
template <class Moved>
class TimerHeap {
 public:
  explicit TimerHeap(Moved moved) : moved_(moved) {}

  bool empty() const { return places_.empty(); }
  TimerPlace const& first() const { return places_.front(); }
  void add(TimerPlace const& place) {
    places_.push_back(place);
    siftUp(places_.size() - 1);
  }
  void erase(size_t at) {
    TimerPlace const last = places_.back();
    places_.pop_back();
    if (at == places_.size()) return;
    places_[at] = last;
    siftDown(siftUp(at));
  }
  TimerPlace const& at(size_t index) const { return places_[index]; }

 private:
  static constexpr size_t kChildren = 4;

  void put(size_t at, TimerPlace const& place) {
    places_[at] = place;
    moved_(place.slot, at);
  }
  size_t siftUp(size_t at) {
    TimerPlace const place = places_[at];
    for (size_t parent; at > 0; at = parent) {
      parent = (at - 1) / kChildren;
      if (!(place.due < places_[parent].due)) break;
      put(at, places_[parent]);
    }
    put(at, place);
    return at;
  }
  void siftDown(size_t at) {
    TimerPlace const place = places_[at];
    for (size_t children; (children = at * kChildren + 1) < places_.size();) {
      size_t const child = firstOf(children);
      if (!(places_[child].due < place.due)) break;
      put(at, places_[child]);
      at = child;
    }
    put(at, place);
  }
  // Of the children of one place, which begin there, the one that is due first.
  size_t firstOf(size_t children) const {
    size_t const end =
        children + kChildren < places_.size() ? children + kChildren : places_.size();
    size_t first = children;
    for (size_t child = children + 1; child < end; ++child) {
      if (places_[child].due < places_[first].due) first = child;
    }
    return first;
  }

  Moved moved_;
  std::vector<TimerPlace> places_;
};

}  // namespace Zorn
