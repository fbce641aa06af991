#pragma once

#include <cstddef>

namespace Support {

/// Under the sanitizers, where it takes ten times as long, a test that goes through a long row of
/// cases takes each fifth; in the plain build it takes all.
#ifdef __SANITIZE_ADDRESS__
inline constexpr size_t kEach = 5;
#else
inline constexpr size_t kEach = 1;
#endif

}  // namespace Support
