#pragma once

#include <cstdint>
#include <iosfwd>

#include "model/CpStatus.h"

namespace Macsec {

/// The stages of a key in the drawing above `ControlledPortSm`.
enum class KeyStage : uint8_t { empty, rxProgrammed, rxUp, txProgrammed, txUp, old };

/// Where the newest key of a controlled port stands: one that is on its way, else the one in steady
/// use.
KeyStage stageOf(SakContext const& latest, SakContext const& old);
KeyStage stageOf(CpStatus const& cpStatus);

/// As in the drawing: "RxProgrammed".
char const* nameOf(KeyStage stage);
std::ostream& operator<<(std::ostream& out, KeyStage stage);

}  // namespace Macsec
