#pragma once

#include <optional>
#include <vector>

#include "lab/Wire.h"
#include "model/MkaPortStatus.h"
#include "platform/MessageCounterTypes.h"

namespace Lab {

/// What a frame can have in itself that makes its receiver refuse it: every failure of a part that
/// is counted of received frames.
using Defect = Macsec::MessageCounterFailureSubType;
/// All of them, in the order in which they are checked.
std::vector<Defect> const& defects();

/// A frame that is `good` but for this one defect. Its ICV is right again, under the key of the
/// actor of `receiver` whose frame it is; so what is checked behind the ICV is checked. None if the
/// receiver has no such actor, or would refuse `good` for its form.
std::optional<Frame> madeFrame(Frame const& good, Defect defect,
                               Macsec::MkaPortStatus const& receiver);

}  // namespace Lab
