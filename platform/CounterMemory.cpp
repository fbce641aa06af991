#include "platform/CounterMemory.h"

#include <algorithm>

namespace Macsec::Brine {

// Grows by an eighth at a time: little is unused, and little is copied.
std::span<uint64_t> ProcessCounterMemory::attach(size_t least, size_t most) {
  if (words_.capacity() < least) words_.reserve(std::min(most, least + least / 8));
  if (words_.size() < least) words_.resize(least);
  isAttached_ = true;
  return words_;
}

void ProcessCounterMemory::corruptionFileIs(std::string_view text,
                                            std::span<uint8_t const> octets) {
  corruptionFile_ = {std::string(text), {octets.begin(), octets.end()}};
  ++corruptionFiles_;
}

}  // namespace Macsec::Brine
