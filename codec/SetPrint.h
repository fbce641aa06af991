#pragma once

#include <iosfwd>

#include "codec/ActorKeys.h"
#include "codec/FrameLayout.h"
#include "codec/SetWalk.h"

namespace Codec {

// The parts of a frame as text: a heading that names the part and its octet, then its fields.

void printEapol(std::ostream& out, FrameLayout const& layout);
void printBasicSet(std::ostream& out, FrameLayout const& layout);
/// A set behind the basic one. With a key, what the set wraps is unwrapped, and refused if its
/// integrity is lost; it is written out if `showKeys`.
Refusal printSet(std::ostream& out, SetView const& set, ActorKeys* key, bool showKeys);
void printIcv(std::ostream& out, FrameLayout const& layout, char const* verdict);

}  // namespace Codec
