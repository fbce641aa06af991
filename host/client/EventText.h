#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Macsecd {

/// What a subscriber got as one line, as far as the reader needs it.
struct EventLine {
  double time = 0;  ///< seconds since 1970, by the clock of the switch
  std::string interface;
  std::string words;  ///< for an operator: "the port is open"
};

/// Reads the line of an event; nothing if it isn't understood.
std::optional<EventLine> eventLineOf(std::string_view line);

/// A frame that was captured.
struct CapturedFrame {
  double time = 0;  ///< seconds since 1970, by the clock of the switch
  std::vector<uint8_t> octets;
};

/// Reads the line of a frame; nothing if it is none.
std::optional<CapturedFrame> capturedFrameOf(std::string_view line);

}  // namespace Macsecd
