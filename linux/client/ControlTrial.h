#pragma once

#include <iosfwd>
#include <string>

namespace Linux {

/// A trial of a configuration, as an operator asks for it.
struct ControlTrial {
  std::string socket;
  std::string file;
  unsigned seconds = 120;
  bool showsCountdown = false;  ///< on a line that is written again and again
};

/// Has the file tried, and stays until it is kept, or has gone. Returns the status of the program:
/// 0 if it was kept, 1 if it has mistakes or has gone, 3 if the switch can't be asked.
int tryOut(ControlTrial const& trial, std::ostream& out, std::ostream& err);

/// Has what is on trial kept.
int keepTried(std::string const& socket, std::ostream& out, std::ostream& err);

}  // namespace Linux
