#pragma once

#include <string_view>
#include <vector>

#include "host/text/Result.h"

namespace Macsecd {

/// A member of a JSON object, as views of the text in which it stands.
struct JsonMember {
  std::string_view name;   ///< between its quotes, with escapes as they are written
  std::string_view value;  ///< the whole of it, with its quotes if it is a text
};

/// Splits an object whose values are texts, numbers, `true`, `false` or `null` into its members, in
/// their order. Copies nothing, so that wiping the text wipes all. Whether a value is well-formed
/// within itself is the caller's to find out, and so is what it means that a name comes twice.
Result<std::vector<JsonMember>> jsonMembers(std::string_view text);

}  // namespace Macsecd
