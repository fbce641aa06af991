#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <span>

#include "runtime/IntfId.h"

namespace Bench {

/// A frame on its way. There is room for an MKPDU of few peers: thousands on their way at once lie
/// close together, as in the ring of a network card.
struct alignas(64) CarriedFrame {
  double due;
  CarriedFrame* next;  // on the way behind this one, or free
  uint32_t to;
  Lumo::IntfId intfId;
  uint32_t size;
  std::array<uint8_t, 288> octets;
};
static_assert(sizeof(CarriedFrame) == 320);

/// The wires of a fabric, all of one length and without faults. They allocate for as many frames as
/// were on their way at one time, once; the frame that arrived last is the first to be used again.
class Wires {
 public:
  explicit Wires(double delay) : delay_(delay) {}

  void carry(double now, uint32_t to, Lumo::IntfId intfId, std::span<uint8_t const> frame);
  /// The frame that arrives next; null if there is none. It is the caller's until `release()`.
  CarriedFrame* take(double now);
  void release(CarriedFrame& frame);
  /// The frame that arrives next, now or later; null if there is none.
  CarriedFrame const* first() const { return first_; }
  /// When the next frame arrives; `Zorn::never` if none is on its way.
  double nextTime() const;
  /// What the wires occupy.
  uint64_t memory() const { return frames_.size() * sizeof(CarriedFrame); }

 private:
  CarriedFrame& unused();

  double const delay_;
  std::deque<CarriedFrame> frames_;
  CarriedFrame* free_ = nullptr;
  CarriedFrame* first_ = nullptr;
  CarriedFrame* last_ = nullptr;
};

}  // namespace Bench
