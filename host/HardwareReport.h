#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace Macsecd {

/// What the hardware of an interface tells beside what the status tree has room for.
struct HardwareReport {
  std::string device;                      ///< its name on this machine; empty for none
  std::optional<uint64_t> txPacketNumber;  ///< the next one to send
  std::optional<uint64_t> rxPacketNumber;  ///< the next one to be expected, of the latest key
  uint64_t framesNotValid = 0;             ///< received, and not valid under their key
  /// When it was last seen to have received such a frame, on the world's clock.
  double notValidTime = -std::numeric_limits<double>::infinity();
};

}  // namespace Macsecd
