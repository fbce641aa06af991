#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

namespace Linux {

/// What `macsecctl` is to follow, and how long.
struct ControlFollow {
  std::string socket;
  std::string interface;  ///< empty: all
  bool json = false;      ///< show the lines as they come
  double seconds = 0;     ///< 0: until a signal
  size_t count = 0;       ///< so many lines; 0: all
};

// Both return the exit status of the program: 0, 1 when the switch refused or the file can't be
// written, 3 when the switch can't be asked or ended the connection.

/// Shows the events of the ports as they come, with the time of day.
int showEvents(ControlFollow const& follow, std::ostream& out, std::ostream& err);
/// Writes the frames of an interface to a pcap file, each as it comes.
int captureFrames(ControlFollow const& follow, std::string const& file, std::ostream& out,
                  std::ostream& err);

}  // namespace Linux
