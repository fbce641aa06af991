#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/text/Result.h"
#include "linux/serve/Listener.h"

namespace Linux {

/// A TCP socket that listens at "127.0.0.1:9464" or "[::1]:9464". Port 0 is any that is free. An
/// address that isn't one of this machine alone is refused.
Macsecd::Result<std::unique_ptr<Listener>> listenAtLoopback(std::string const& address);

/// The port at which a TCP socket listens; 0 if it doesn't.
uint16_t portOf(int socket);

}  // namespace Linux
