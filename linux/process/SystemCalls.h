#pragma once

namespace Linux {

/// Refuses for good, with EPERM, the system calls by which somebody who has come to run code in
/// this process could do more than it does: start programs, look into other processes, change
/// namespaces, mounts, modules and the clock. A new process may be made, but not in namespaces of
/// its own. Throws `std::system_error` if the kernel has no
/// filters, or if new privileges haven't been given up yet (`dropPrivileges` does both).
void refuseSystemCalls();

}  // namespace Linux
