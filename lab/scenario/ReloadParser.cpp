#include <filesystem>

#include "host/config/InputFile.h"
#include "lab/scenario/ActionParts.h"

// A configuration that a switch reads while it runs.

namespace Lab {

Reload parseReload(Words& words, Known& known) {
  auto name = words.switchName(known);
  words.need("from");
  int column = words.column();
  auto file = words.any("the name of a file");
  auto const path = std::filesystem::path(known.file).parent_path() / file;
  if (auto const fault = Macsecd::InputFile(path.string()).fault()) {
    Words::failAt(column, fault->what, "name a file beside the scenario");
  }
  Reload reload{name, file, Macsecd::readConfigFile(path.string(), Macsecd::Keys::example)};
  for (auto& diagnostic : reload.read.diagnostics) diagnostic.file = file;
  if (reload.read.good()) known.add(name, reload.read.config);
  return reload;
}

}  // namespace Lab
