#pragma once

#include <string>

#include "linux/kernel/MacsecKernel.h"

namespace Linux {

/// The device that a network device is a member of.
struct Master {
  std::string name = {};  ///< empty for none
  std::string kind = {};  ///< as the kernel calls it: "bridge", "bond"
};

/// A request of this program's that the kernel has refused.
struct RefusedRequest {
  std::string interface;  ///< on which it was made
  std::string device;     ///< the MACsec device that it was about
  bool isNewDevice;       ///< which it was to make
  Master master;          ///< of the interface
};

/// What an operator can do about this answer to the request.
std::string remedyOf(KernelAnswer const& answer, RefusedRequest const& request);

}  // namespace Linux
