#include "host/text/TextTable.h"

#include <fmt/format.h>

#include <algorithm>

namespace Macsecd {

std::string textTable(std::vector<std::vector<std::string>> const& rows) {
  std::vector<size_t> widths;
  for (auto const& row : rows) {
    widths.resize(std::max(widths.size(), row.size()), 1);
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text;
  for (auto const& row : rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      line += fmt::format("{:<{}}  ", row[i].empty() ? "-" : row[i], widths[i]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

}  // namespace Macsecd
