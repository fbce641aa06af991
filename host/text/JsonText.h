#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace Macsecd {

using Json = nlohmann::ordered_json;

/// One line of JSON, without its end. Octets that aren't UTF-8, as a name may have them, are
/// replaced.
inline std::string jsonText(Json const& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace Macsecd
