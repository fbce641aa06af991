#pragma once

#include <sys/types.h>

#include <string>

namespace Linux {

/// A process as a message names it: "process 4711 (macsecd --state /run/left)". Without its command
/// line, which may be anything, where that can't be read; nothing of it can end a line of the log.
std::string processName(pid_t pid);

}  // namespace Linux
