#pragma once

#include <string>

#include "host/text/Result.h"

namespace Macsecd {

/// Makes the key in this file the one under which the process stores keys (`WardcodeLib`): 32
/// octets, readable by their owner alone (mode 0600). A file that isn't there is made, with random
/// octets of the world. A fault has the path in front, and then nothing is changed.
Result<> useHostKeyFile(std::string const& path);

}  // namespace Macsecd
