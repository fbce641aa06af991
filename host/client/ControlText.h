#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Macsecd {

/// How an operator reads what `Control` answered.
enum class ControlView : uint8_t {
  status,    ///< a line for each port
  ports,     ///< everything of each port
  peers,     ///< a line for each peer
  keys,      ///< a line for each key, by its name
  counters,  ///< a line for each counter
  explain,   ///< why ports aren't secured
  rekey,     ///< the new key
  reload,    ///< the mistakes of the file, if there are any
  done,      ///< nothing
};

struct ControlReading {
  std::string text;
  bool isGood = true;  ///< false when the switch refused, or didn't take a file
};

/// `answer` is the JSON of the answer, whatever it is.
ControlReading readingOf(ControlView view, std::string_view answer);

}  // namespace Macsecd
