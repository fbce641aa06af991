#pragma once

#include <string>
#include <vector>

namespace Macsecd {

/// The rows under each other, columns parted by two blanks; an empty cell reads "-". The first row
/// is the heading.
std::string textTable(std::vector<std::vector<std::string>> const& rows);

}  // namespace Macsecd
