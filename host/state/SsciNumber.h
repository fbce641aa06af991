#pragma once

#include <cstdint>
#include <optional>

#include "model/Sci.h"

namespace Macsecd {

/// The number of an SSCI; nothing as long as there is none.
std::optional<uint32_t> ssciNumber(Macsec::Ssci const& ssci);

}  // namespace Macsecd
