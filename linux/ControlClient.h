#pragma once

#include <string>
#include <variant>

#include "host/KeyText.h"

namespace Linux {

/// Asks the switch that listens at `path`, and waits for its answer, for `seconds` at most. The
/// request and the answer are JSON, without an end of line.
std::variant<std::string, Macsecd::Fault> askAt(std::string const& path, std::string const& request,
                                                int seconds = 10);

}  // namespace Linux
