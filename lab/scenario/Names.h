#pragma once

#include <compare>
#include <string>

namespace Lab {

/// An interface of a switch.
struct PortName {
  std::string switchName;
  std::string interface;
  std::string text() const { return switchName + " " + interface; }
  friend auto operator<=>(PortName const&, PortName const&) = default;
};

struct ProfileName {
  std::string switchName;
  std::string profile;
};

/// Remembers under a name the SAK and the number of rotations of every port, and what each switch
/// has exited and written.
struct Mark {
  std::string name;
};

}  // namespace Lab
