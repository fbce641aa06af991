#pragma once

#include <string>

namespace Linux {

/// Seconds since 1970 at this time of the clock of `ProcessWorld::now()` on the same machine, as
/// far as the machine knows now what time it is.
double wallTimeOf(double seconds);

/// "2026-01-31 23:59:59.123", in the time zone of the process.
std::string wallTimeText(double secondsSince1970);

}  // namespace Linux
