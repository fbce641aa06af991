#pragma once

#include <string>

#include "linux/process/Descriptor.h"

namespace Linux {

/// Keeps a file locked against other processes, for as long as it lives. The kernel ends the lock
/// with the process, however that ends; a child doesn't have it. The file stays.
class FileLock {
 public:
  /// Makes the file, 0600, if there is none. Throws `std::runtime_error` with path and remedy if it
  /// isn't a file of this user, or if another process has it locked, which is named. Nothing else
  /// in this process may open and close the file: that ends the lock.
  explicit FileLock(std::string const& path);

 private:
  Descriptor const file_;
};

}  // namespace Linux
