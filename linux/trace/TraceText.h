#pragma once

#include <iosfwd>
#include <string>

namespace Linux {

/// Shows what stands in a trace file, oldest first, with the time of day: a line, or a JSON object,
/// for each statement. Needs no daemon. Returns the exit status of the program: 0, or 1 when there
/// is nothing to read.
int showTrace(std::string const& path, bool json, std::ostream& out, std::ostream& err);

}  // namespace Linux
