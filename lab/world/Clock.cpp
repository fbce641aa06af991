#include "lab/world/Clock.h"

#include <fmt/format.h>

namespace Lab {

std::string timeText(double time) {
  std::string text = fmt::format("{:.6f}", time);
  for (int spare = 3; spare > 0 && text.back() == '0'; --spare) text.pop_back();
  return text;
}

std::string withoutTime(std::string const& line) {
  constexpr std::string_view expect = " expect ";
  if (size_t const at = line.find(expect); at != std::string::npos) {
    return line.substr(at + expect.size());
  }
  size_t const blank = line.find(' ', std::min(line.size(), line.find(' ') + 1));
  return blank == std::string::npos ? line : line.substr(blank + 1);
}

}  // namespace Lab
