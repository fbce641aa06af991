#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace Macsecd {

using Json = nlohmann::ordered_json;

/// One line of JSON, without its end. Octets that aren't UTF-8, as a name may have them, are
/// replaced.
inline std::string jsonText(Json const& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// What isn't known, and so is empty, is null.
inline Json orNull(std::string const& text) { return text.empty() ? Json() : Json(text); }
template <class T>
Json orNull(std::optional<T> const& value) {
  return value ? Json(*value) : Json();
}

}  // namespace Macsecd
