#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/Entity.h"

namespace Macsecd {

/// The path of what lies below `path` ("" for the tree itself) under a name of any octets.
std::string statePath(std::string_view path, std::string_view name);
/// The names that a path is made of. Throws `Vesk::ParseException` for what is no path.
std::vector<std::string> statePathNames(std::string_view path);
/// Where the entity stands in the tree of `root`; none if it doesn't, or does no more.
std::optional<std::string> statePathOf(Vesk::Entity const& entity, Vesk::Entity const& root);

}  // namespace Macsecd
