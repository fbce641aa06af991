#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "runtime/PtrInterface.h"

namespace Lumo {

/// A packet buffer with a current position.
class Pkt : public Vesk::PtrInterface {
 public:
  explicit Pkt(size_t size) : bytes_(size) {}
  explicit Pkt(std::span<uint8_t const> bytes) : bytes_(bytes.begin(), bytes.end()) {}

  /// Bytes from the start of the buffer to the current position.
  size_t position() const { return position_; }
  /// Moves the current position; one past the last byte is the farthest it goes.
  void positionIs(size_t position);
  size_t size() const { return bytes_.size(); }
  size_t remaining() const { return bytes_.size() - position_; }
  /// The data at the current position.
  uint8_t* data() { return bytes_.data() + position_; }
  std::span<uint8_t> bytes() { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
  size_t position_ = 0;
};

}  // namespace Lumo
