#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "host/config/ConfigFile.h"

namespace Macsecd {

/// The lines of what an operator would see.
inline std::vector<std::string> complaints(std::string const& text) {
  std::vector<std::string> lines;
  for (auto const& diagnostic : parseConfig(text, "f").diagnostics)
    lines.push_back(diagnostic.text());
  return lines;
}

/// A profile p with the given lines, which stand from line 3 on in column 5.
inline std::string profile(std::string const& lines) {
  std::string text = "profiles:\n  p:\n";
  for (size_t at = 0; at < lines.size();) {
    size_t end = std::min(lines.find('\n', at), lines.size());
    text += "    " + lines.substr(at, end - at) + "\n";
    at = end + 1;
  }
  return text;
}

}  // namespace Macsecd
