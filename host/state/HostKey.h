#pragma once

#include <optional>
#include <string>

namespace Macsecd {

/// Makes the key in this file the one under which the process stores keys (`WardcodeLib`): 32
/// octets, readable by their owner alone (mode 0600). A file that isn't there is made, with random
/// octets of the world. Returns what is wrong and what to do about it, with the path in front, and
/// then changes nothing; nothing when all is well.
std::optional<std::string> useHostKeyFile(std::string const& path);

}  // namespace Macsecd
