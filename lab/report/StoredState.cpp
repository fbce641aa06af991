#include "lab/report/StoredState.h"

#include <fstream>

namespace Lab {

std::vector<std::filesystem::path> writeStoredState(Simulation const& simulation,
                                                    std::filesystem::path const& folder) {
  std::error_code error;  // shows when the file is made
  std::filesystem::create_directories(folder, error);
  std::vector<std::filesystem::path> paths;
  for (auto const& device : simulation.switches()) {
    paths.push_back(folder / fileName(simulation.scenario(), "." + device->name() + ".state"));
    std::ofstream out(paths.back(), std::ios::binary | std::ios::trunc);
    for (auto const& [path, value] : device->store().values()) out << path << ' ' << value << '\n';
    if (!out.flush()) throw FileError(paths.back(), "--state-dir");
  }
  return paths;
}

}  // namespace Lab
