#pragma once

#include <cstdint>

namespace Dot1x {

/// The kind of an 802.1X key. 0 may act as key server, 1 may not; 2 is no kind of published key: it
/// stands for a key that is configured.
using Dot1xType = uint8_t;

}  // namespace Dot1x
