#pragma once

#include <string_view>

#include "host/text/JsonText.h"

namespace Macsecd {

// What both ends of the control socket know.

/// Of the requests at the control socket, and of what is answered.
inline constexpr int kControlVersion = 2;

/// A request, to which further members may be added.
inline Json requestOf(std::string_view command) {
  return {{"version", kControlVersion}, {"command", command}};
}

}  // namespace Macsecd
