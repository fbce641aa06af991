#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "lab/ActionParts.h"

// A configuration that a switch reads while it runs.

namespace Lab {

namespace {

bool canBeRead(std::filesystem::path const& path) {
  return !std::filesystem::is_directory(path) && std::ifstream(path).is_open();
}

}  // namespace

Reload parseReload(Words& words, Known& known) {
  auto name = words.switchName(known);
  words.need("from");
  int column = words.column();
  auto file = words.any("the name of a file");
  auto const path = std::filesystem::path(known.file).parent_path() / file;
  if (!canBeRead(path)) {
    auto reason = std::generic_category().message(errno ? errno : EISDIR);
    Words::failAt(column, "the file can't be read: " + reason, "name a file beside the scenario");
  }
  Reload reload{name, file, Macsecd::readConfigFile(path.string())};
  for (auto& mistake : reload.read.mistakes) mistake.file = file;
  if (reload.read.good()) known.add(name, reload.read.config);
  return reload;
}

}  // namespace Lab
