#pragma once

#include "host/text/Result.h"

namespace Linux {

/// Refuses for good, with EPERM, the system calls by which somebody who has come to run code in
/// this process could do more than it does: start programs, look into other processes, change
/// namespaces, mounts, modules and the clock. A new process may be made, but not in namespaces of
/// its own. The kernel does it if new privileges have been given up (`dropPrivileges` does both).
Macsecd::Result<> refuseSystemCalls();

}  // namespace Linux
