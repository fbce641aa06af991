#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "lab/scenario/Scenario.h"

namespace Lab {

/// A file that can't be written, and what to do about it.
struct FileError : std::runtime_error {
  using std::runtime_error::runtime_error;
  /// Says which option names the folder of the file.
  FileError(std::filesystem::path const& file, std::string const& option);
};

/// The name of a file of a scenario: that of the scenario, and what follows. Letters, digits, dots
/// and hyphens stay; what a file name shouldn't hold becomes an underscore.
std::string fileName(Scenario const& scenario, std::string const& what);

}  // namespace Lab
