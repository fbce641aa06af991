#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Macsecd {

/// A time of the world's wall clock as all JSON has it: "2026-01-31T23:59:57.104250Z" (RFC 3339).
std::string timeText(double secondsSince1970);

/// The seconds since 1970 that such a text stands for; nothing for any other text.
std::optional<double> timeOf(std::string_view text);

}  // namespace Macsecd
