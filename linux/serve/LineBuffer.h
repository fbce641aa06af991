#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

#include "linux/process/Limits.h"
#include "platform/SecretOctets.h"

namespace Linux {

/// Octets of a stream until they make a line. What has been taken out is wiped, and so is the rest
/// at the end: lines hold keys.
///
///     | line, not yet ended ... | room, all zero ... |
class LineBuffer {
 public:
  /// Longest line, in octets without its end.
  static constexpr size_t kMaxLine = Limits::kLine;

  LineBuffer() { octets_.sizeIs(kMaxLine + 1); }

  /// Where the next octets of the stream go; empty when a line is too long.
  std::span<uint8_t> room() { return octets_.octets().subspan(used_); }
  /// So many octets have been put there.
  void filled(size_t size) { used_ += size; }
  /// An unfinished line.
  bool hasRest() const { return used_ > 0; }
  /// Nothing but an unfinished line that no octet can be added to.
  bool isFull() const { return used_ > kMaxLine; }

  /// Hands each finished line to `take(std::span<uint8_t>)`, without its end, as long as that
  /// returns true, and wipes it behind.
  template <class Take>
  void takeLines(Take take) {
    auto const all = octets_.octets().first(used_);
    auto line = all.begin();
    for (bool goesOn = true; goesOn;) {
      auto const end = std::find(line, all.end(), '\n');
      if (end == all.end()) break;
      goesOn = take(std::span(line, end));
      line = end + 1;
    }
    size_t const rest = static_cast<size_t>(all.end() - line);
    std::memmove(all.data(), all.data() + (used_ - rest), rest);
    Macsec::wipe(all.subspan(rest));
    used_ = rest;
  }

 private:
  Macsec::SecretOctets<kMaxLine + 1> octets_;
  size_t used_ = 0;
};

}  // namespace Linux
