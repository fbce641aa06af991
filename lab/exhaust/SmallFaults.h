#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "lab/world/Simulation.h"

namespace Lab {

/// The smallest things that can go wrong in a run.
enum class SmallFault : uint8_t {
  loss,       ///< a frame is lost
  duplicate,  ///< a frame arrives twice
  delay,      ///< a frame arrives behind the next one of its way
  replay,     ///< a frame comes again a while later
  late,       ///< the timers of a switch come two milliseconds late, and frames before them
  death       ///< a process dies at a commit to its store, or right before it
};

inline constexpr std::array kSmallFaults{SmallFault::loss,  SmallFault::duplicate,
                                         SmallFault::delay, SmallFault::replay,
                                         SmallFault::late,  SmallFault::death};
/// "loss".
char const* wordOf(SmallFault fault);

/// Every fault of this kind that a run offers, which has been played to its end: the line of a
/// scenario that brings it about in the next one.
std::vector<std::string> allOf(SmallFault fault, Simulation const& played);

}  // namespace Lab
