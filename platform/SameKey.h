#pragma once

#include "runtime/String8.h"

namespace Macsec {

/// Whether two stored keys are one: the only place that compares keys. Their clear text counts, for
/// encodings of one key differ; it is compared in a time that depends on the lengths alone, and
/// wiped. No key is the same as no key. A stored key that doesn't decode is reported and is the
/// same as its own octets alone: two of which nothing is known are two keys, and none of them is no
/// key.
bool isSameKey(Vesk::String8 const& stored, Vesk::String8 const& other);

}  // namespace Macsec
