#pragma once

#include <optional>
#include <string>
#include <vector>

#include "lab/verdict/Judges.h"

namespace Lab {

/// What came of a run.
struct FaultyRun {
  std::optional<Judges::Verdict> verdict;  ///< what speaks against it
  /// The same number for runs in which everything but frames and log lines has happened alike, and
  /// that have left the same in the stores.
  size_t mark;
};

/// Plays the text of a scenario without mistakes. What it names lies beside `file`.
FaultyRun playFaulty(std::string const& text, std::string const& file);

}  // namespace Lab
