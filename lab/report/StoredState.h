#pragma once

#include <filesystem>
#include <vector>

#include "lab/report/Files.h"
#include "lab/world/Simulation.h"

namespace Lab {

/// Writes what the store of each switch holds, a file for each: lines of a path, a blank and a
/// value, in the order of the paths. Makes the folder, and returns the files. Throws FileError that
/// names what can't be written.
std::vector<std::filesystem::path> writeStoredState(Simulation const& simulation,
                                                    std::filesystem::path const& folder);

}  // namespace Lab
