#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Fuzz {

using Octets = std::span<uint8_t const>;

/// The octets that a target was given, taken from the first to the last. Behind the last there are
/// zeros for ever, so that every input means something.
class Input {
 public:
  explicit Input(Octets octets) : rest_(octets) {}

  bool isOver() const { return rest_.empty(); }
  uint8_t octet() {
    if (rest_.empty()) return 0;
    uint8_t const first = rest_.front();
    rest_ = rest_.subspan(1);
    return first;
  }
  uint16_t word() {
    uint8_t const high = octet();
    return static_cast<uint16_t>(high << 8 | octet());
  }
  uint32_t longWord() {
    uint32_t const high = word();
    return high << 16 | word();
  }
  /// From 0 up to, and without, `end`, which is 256 at most.
  unsigned below(unsigned end) { return octet() % end; }
  bool chance(unsigned percent) { return below(100) < percent; }
  /// So many octets, or as many as there are.
  Octets take(size_t count) {
    Octets const taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  Octets rest() { return take(rest_.size()); }

 private:
  Octets rest_;
};

}  // namespace Fuzz
