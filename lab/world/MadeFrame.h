#pragma once

#include <optional>

#include "lab/scenario/Defect.h"
#include "lab/world/Wire.h"
#include "model/MkaPortStatus.h"

namespace Lab {

/// A frame that is `good` but for this one defect. Its ICV is right again, under the key of the
/// actor of `receiver` whose frame it is; so what is checked behind the ICV is checked. None if the
/// receiver has no such actor, or would refuse `good` for its form.
std::optional<Frame> madeFrame(Frame const& good, Defect defect,
                               Macsec::MkaPortStatus const& receiver);

}  // namespace Lab
