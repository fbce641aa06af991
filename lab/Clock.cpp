#include "lab/Clock.h"

#include <fmt/format.h>

namespace Lab {

std::string timeText(double time) {
  std::string text = fmt::format("{:.6f}", time);
  for (int spare = 3; spare > 0 && text.back() == '0'; --spare) text.pop_back();
  return text;
}

}  // namespace Lab
