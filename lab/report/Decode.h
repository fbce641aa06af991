#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "codec/FrameDump.h"

namespace Lab {

/// The key pair of a text `CKN:CAK`; nothing, with the reason and the remedy on `err`, for a text
/// that is none. The text of the CAK never appears there.
std::optional<Codec::KeyPair> keyPairOf(std::string_view text, std::ostream& err);

/// Prints every MKPDU of a capture, set by set, and whether its ICV is right under the keys given.
/// Frames that are no MKPDU are named and skipped. SAKs and CAKs that frames carry are shown in
/// clear only if `showKeys`.
///
/// Gives the exit status: 0 if nothing is wrong; 1 if a frame is damaged or forged, or, when keys
/// were given, bears the name of none of them, so that nothing vouches for it; 2 if the file or a
/// key can't be used.
int decode(std::string const& file, std::vector<Codec::KeyPair> const& keys, bool showKeys,
           std::ostream& out, std::ostream& err);

}  // namespace Lab
