#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "runtime/Text.h"

namespace Macsecd {

/// How the device stands through which the traffic of a port goes.
enum class DeviceState : uint8_t {
  up,
  dormant,  ///< up, and showing that no traffic may pass (RFC 2863, ifOperStatus)
  down,     ///< set down, by whomever
  absent,
};

/// What the hardware of an interface tells beside what the status tree has room for. Hardware that
/// has no devices tells of one that is up.
struct HardwareReport {
  std::string device;  ///< its name on this machine; empty for none
  DeviceState deviceState = DeviceState::up;
  uint32_t devicesMade = 0;                ///< so often did this process make the device
  std::optional<bool> sends;               ///< with an SA; nothing if the tree is right on that
  std::optional<bool> receives;            ///< the same
  std::optional<uint64_t> txPacketNumber;  ///< the next one to send
  std::optional<uint64_t> rxPacketNumber;  ///< the next one to be expected, of the latest key
  uint64_t framesNotValid = 0;             ///< received, and not valid under their key
  /// When it was last seen to have received such a frame, on the world's clock.
  double notValidTime = -std::numeric_limits<double>::infinity();
};

}  // namespace Macsecd

template <>
struct Vesk::EnumNames<Macsecd::DeviceState> {
  using State = Macsecd::DeviceState;
  static constexpr std::pair<State, char const*> names[] = {{State::up, "up"},
                                                            {State::dormant, "dormant"},
                                                            {State::down, "down"},
                                                            {State::absent, "absent"}};
};
