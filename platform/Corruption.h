#pragma once

#include <stdexcept>

namespace Pollux {

/// Shared memory that isn't what its writer left.
class CorruptionDetectedException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace Pollux
