#include "bench/Wires.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "runtime/TimerWheel.h"

namespace Bench {

void Wires::carry(double now, uint32_t to, Lumo::IntfId intfId, std::span<uint8_t const> frame) {
  CarriedFrame& carried = unused();
  if (frame.size() > carried.octets.size()) throw std::length_error("no wire carries this frame");
  carried.due = now + delay_;
  carried.next = nullptr;
  carried.to = to;
  carried.intfId = intfId;
  carried.size = static_cast<uint32_t>(frame.size());
  std::copy(frame.begin(), frame.end(), carried.octets.begin());
  (first_ ? last_->next : first_) = &carried;
  last_ = &carried;
}

CarriedFrame& Wires::unused() {
  if (!free_) return frames_.emplace_back();
  return *std::exchange(free_, free_->next);
}

CarriedFrame* Wires::take(double now) {
  return nextTime() <= now ? std::exchange(first_, first_->next) : nullptr;
}

void Wires::release(CarriedFrame& frame) {
  frame.next = free_;
  free_ = &frame;
}

double Wires::nextTime() const { return first_ ? first_->due : Zorn::never; }

}  // namespace Bench
