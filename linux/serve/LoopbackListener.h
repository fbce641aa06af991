#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "linux/process/Descriptor.h"

namespace Linux {

/// A TCP socket that listens, without ever blocking, at "127.0.0.1:9464" or "[::1]:9464". Otherwise
/// returns what is wrong and what to do: an address that isn't one of this machine alone is
/// refused.
std::variant<Descriptor, std::string> listenAtLoopback(std::string const& address);

/// The port at which a TCP socket listens; 0 if it doesn't.
uint16_t portOf(Descriptor const& socket);

}  // namespace Linux
