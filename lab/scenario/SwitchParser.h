#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/text/Diagnostic.h"
#include "lab/scenario/Scenario.h"

namespace Lab {

/// One line of the file that isn't blank, and where it stands.
struct Line {
  int number;          ///< from 1
  size_t indentation;  ///< blanks before the first word
  std::string_view text;
};

/// Reads the indented lines of a switch. `lines` are those between its header and the next line
/// without indentation; `file` is the scenario's. Every mistake goes to `diagnostics`, those of the
/// configuration too.
void parseSwitch(std::vector<Line> const& lines, std::string const& file, SwitchSpec& spec,
                 std::vector<Macsecd::Diagnostic>& diagnostics);

}  // namespace Lab
