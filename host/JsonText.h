#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace Macsecd {

/// One line of JSON, without its end. Octets that aren't UTF-8, as a name may have them, are
/// replaced.
inline std::string jsonText(nlohmann::ordered_json const& json) {
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace Macsecd
