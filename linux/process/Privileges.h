#pragma once

#include "host/text/Result.h"

namespace Linux {

/// Whether the process has CAP_NET_ADMIN and CAP_NET_RAW; a fault names what it lacks.
Macsecd::Result<> checkPrivileges();

/// Gives up for good what a process that agrees on keys doesn't need: every capability but
/// CAP_NET_ADMIN and CAP_NET_RAW, the way to new ones, core dumps, that others trace it,
/// and system calls that it never makes (linux/process/SystemCalls.h). Nothing that it doesn't have
/// is missed. A fault says what the kernel refuses.
Macsecd::Result<> dropPrivileges();

/// Keeps all memory of the process, and with it the keys, out of the swap space, and no more of it
/// than is used. Before `dropPrivileges`.
Macsecd::Result<> lockMemory();

}  // namespace Linux
