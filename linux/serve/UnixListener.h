#pragma once

#include <memory>
#include <string>

#include "host/text/Result.h"
#include "linux/serve/Listener.h"

namespace Linux {

/// A Unix stream socket that listens at a path, with these permissions of its file, which goes with
/// it. A socket that nobody listens on any more is replaced; otherwise a fault has the path in
/// front, and everything is left as it is.
Macsecd::Result<std::unique_ptr<Listener>> listenAtPath(std::string const& path, mode_t mode);

}  // namespace Linux
