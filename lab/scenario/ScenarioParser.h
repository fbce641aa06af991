#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/text/Diagnostic.h"
#include "lab/scenario/Scenario.h"

namespace Lab {

/// The scenario, and the diagnostics of the file and of the configurations in it. The scenario may
/// be played only if there is none.
struct ScenarioResult {
  Scenario scenario;
  std::vector<Macsecd::Diagnostic> diagnostics;
  bool good() const { return diagnostics.empty(); }
};

/// Reads the text of a scenario (docs/lab.md). `file` names the places of mistakes, and names of
/// configuration files are relative to its folder.
ScenarioResult parseScenario(std::string_view text, std::string const& file);
/// Reads a file. One that can't be read is one diagnostic at 1:1.
ScenarioResult readScenario(std::string const& path);

}  // namespace Lab
