#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/config/ConfigFile.h"

// Any octets as the text of a configuration: they are read in time that goes with their number, and
// what is wrong with them is told at places within them.
extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  std::string_view const text(reinterpret_cast<char const*>(octets), size);
  auto const read = Macsecd::parseConfig(text, "fuzz.yaml");
  for (auto const& mistake : read.mistakes) {
    bool const isWhole = mistake.line >= 1 && mistake.column >= 1 && !mistake.what.empty() &&
                         !mistake.remedy.empty();
    if (!isWhole) __builtin_trap();
  }
  if (read.mistakes.size() > 200) __builtin_trap();
  return 0;
}
