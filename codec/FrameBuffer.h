#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "model/Overlay.h"

namespace Codec {

/// A frame that is being written, on the stack: the largest that an Ethernet carries.
class FrameBuffer {
 public:
  static constexpr size_t kMaxBody = 1500;
  static constexpr size_t kMaxFrame = 14 + kMaxBody;

  size_t size() const { return size_; }
  std::span<uint8_t> octets() { return std::span(octets_).first(size_); }
  std::span<uint8_t const> octets() const { return std::span(octets_).first(size_); }

  /// So many more octets, zero; none when they don't fit.
  std::span<uint8_t> append(size_t count) {
    if (count > kMaxFrame - size_) return {};
    auto const added = std::span(octets_).subspan(size_, count);
    std::ranges::fill(added, 0);
    size_ += count;
    return added;
  }

 private:
  size_t size_ = 0;
  std::array<uint8_t, kMaxFrame> octets_;
};

}  // namespace Codec
