#pragma once

#include <optional>
#include <string>

namespace Linux {

/// What the process lacks of CAP_NET_ADMIN and CAP_NET_RAW, and what to do about it.
std::optional<std::string> missingPrivileges();

/// Gives up for good what a process that agrees on keys doesn't need: every capability but
/// CAP_NET_ADMIN and CAP_NET_RAW, the way to new ones, core dumps, that others trace it,
/// and system calls that it never makes (linux/process/SystemCalls.h). Nothing that it doesn't have
/// is missed. Throws `std::system_error` if the kernel refuses.
void dropPrivileges();

/// Keeps all memory of the process, and with it the keys, out of the swap space. Otherwise what is
/// wrong and what to do about it. Before `dropPrivileges`.
[[nodiscard]] std::optional<std::string> lockMemory();

}  // namespace Linux
