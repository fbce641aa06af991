#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/config/ConfigFile.h"

// Any octets as the text of a configuration: they are read in time that goes with their number, and
// what is wrong with them is told at places within them.
extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  std::string_view const text(reinterpret_cast<char const*>(octets), size);
  auto const read = Macsecd::parseConfig(text, "fuzz.yaml");
  for (auto const& diagnostic : read.diagnostics) {
    bool const isWhole = diagnostic.line >= 1 && diagnostic.column >= 1 &&
                         !diagnostic.what.empty() && !diagnostic.remedy.empty();
    if (!isWhole) __builtin_trap();
  }
  if (read.diagnostics.size() > 200) __builtin_trap();
  return 0;
}
