#pragma once

#include <vector>

#include "platform/MessageCounterTypes.h"

namespace Lab {

/// What a frame can have in itself that makes its receiver refuse it: every failure of a part that
/// is counted of received frames.
using Defect = Macsec::MessageCounterFailureSubType;
/// All of them, in the order in which they are checked.
std::vector<Defect> const& defects();

}  // namespace Lab
