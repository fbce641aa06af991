#pragma once

#include "model/Status.h"

namespace Macsecd {

/// A second status tree with the same content: what a restarted process finds of the one that ran
/// before it.
Vesk::Ptr<Macsec::Status> copyOf(Macsec::Status const& status);

}  // namespace Macsecd
