#pragma once

#include <cstdint>
#include <span>

#include "runtime/IntfId.h"

namespace Codec {

/// Where frames go out: the host's packet sockets, or a wire of the lab.
class FrameSink {
 public:
  virtual ~FrameSink() = default;
  /// Sends a frame, from its destination address to its last octet and without a frame check
  /// sequence, on an interface. The octets are the caller's and are gone when this returns.
  virtual void send(Lumo::IntfId intfId, std::span<uint8_t const> frame) = 0;
};

}  // namespace Codec
