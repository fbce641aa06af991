#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace Fuzz {

/// Ends the process with a finding unless it holds.
inline void require(bool holds, std::string_view what) {
  if (holds) return;
  std::fprintf(stderr, "BROKEN: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

}  // namespace Fuzz
