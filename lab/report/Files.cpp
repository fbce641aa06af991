#include "lab/report/Files.h"

namespace Lab {

FileError::FileError(std::filesystem::path const& file, std::string const& option)
    : std::runtime_error("can't write " + file.string() +
                         "; name a folder that may be written with " + option) {}

std::string fileName(Scenario const& scenario, std::string const& what) {
  std::string name = std::filesystem::path(scenario.file).stem().string() + what;
  for (char& c : name) {
    bool const plain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (!plain && c != '-' && c != '.') c = '_';
  }
  return name;
}

}  // namespace Lab
