#pragma once

namespace Linux {

// How a client of the control socket ends; 0 when all went well.
inline constexpr int kRefused = 1;
inline constexpr int kNoAnswer = 3;

}  // namespace Linux
