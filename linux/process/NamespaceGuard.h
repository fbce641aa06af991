#pragma once

#include <string>

#include "linux/process/Descriptor.h"

namespace Linux {

/// The right to be the one process that secures the interfaces of a network namespace, for as long
/// as this lives. It is a name of an abstract Unix socket: each network namespace has its own, and
/// the kernel frees them with the process.
class NamespaceGuard {
 public:
  /// Throws `std::runtime_error` that names the other process if root or this process's user has
  /// the name already. Any user can take it: one of another user is told in the log, and guards
  /// nothing.
  explicit NamespaceGuard(std::string const& name = "macsecd");

 private:
  Descriptor const socket_;
};

}  // namespace Linux
