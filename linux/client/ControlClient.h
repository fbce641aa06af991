#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/text/Result.h"
#include "linux/process/Limits.h"

namespace Linux {

/// Asks the switch that listens at `path`, and waits for its answer, for `seconds` at most. The
/// request and the answer are JSON, without an end of line.
Macsecd::Result<std::string> askAt(std::string const& path, std::string const& request,
                                   int seconds = Limits::kAnswerWait);

/// Asks the same way and hands the answer, and then each further line, to `take`, which returns
/// whether it wants more. Ends also on SIGINT and SIGTERM, and after `seconds` if there are any.
/// A fault says why it couldn't go on.
Macsecd::Result<> followAt(std::string const& path, std::string const& request,
                           std::function<bool(std::string_view line)> const& take,
                           double seconds = 0);

}  // namespace Linux
