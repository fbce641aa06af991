#pragma once

namespace Support {

/// The name of the primary key of most tests, in hexadecimal digits.
inline constexpr char const* kCkn = "6162";

}  // namespace Support
