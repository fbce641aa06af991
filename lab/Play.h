#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace Lab {

struct PlayOptions {
  std::vector<std::string> files;  ///< scenarios, played in this order
  bool show = false;               ///< the timeline, the status table and where the captures lie
  std::optional<uint32_t> seed;    ///< goes before the scenarios' own
  std::string events;              ///< a file for what happens; empty for none
  std::string pcapDir;             ///< a folder for the captures; empty for none
  std::string stateDir;            ///< a folder for what the stores hold at the end; empty for none
};

/// Plays scenarios and says of each whether its expectations held. Returns the exit status: 0 when
/// all held, 1 when one failed, 2 when a file has mistakes or can't be written; mistakes go to
/// `err`, and nothing is played then.
int play(PlayOptions const& options, std::ostream& out, std::ostream& err);

}  // namespace Lab
