#include "runtime/TimerLane.h"

#include <algorithm>
#include <utility>

#include "runtime/Assert.h"

namespace Zorn {

uint64_t TimerLane::append(TimerPlace const& one) {
  VESK_DEBUG_ASSERT(empty() || lastDue() < one.due);
  if (end_ - begin_ == ring_.size()) grow();
  place(end_) = one;
  lastDue_ = one.due;
  return end_++;
}

// The first place is never one that has been left.
void TimerLane::leave(uint64_t number) {
  VESK_ASSERT(begin_ <= number && number < end_);
  place(number).slot = TimerPlace::kNoSlot;
  ++left_;
  for (; !empty() && first().slot == TimerPlace::kNoSlot; ++begin_) --left_;
}

void TimerLane::grow() {
  TimerLane grown;
  grown.ring_.resize(std::max<size_t>(16, 2 * ring_.size()));
  grown.mask_ = grown.ring_.size() - 1;
  for (uint64_t number = begin_; number != end_; ++number) grown.place(number) = at(number);
  ring_ = std::move(grown.ring_);
  mask_ = grown.mask_;
}

}  // namespace Zorn
