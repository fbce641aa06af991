#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Host.h"
#include "host/Mistake.h"

namespace Macsecd {

/// Answers what an operator's tool asks of a switch: one JSON object for one JSON object.
///
///     {"version": 1, "command": "explain", "interface": "Ethernet1"}
///     {"version": 1, "ok": true, "result": {...}}
///     {"version": 1, "ok": false, "error": "there is no command 'explian'", "remedy": "..."}
///
/// | Command | Further members | Result |
/// |---|---|---|
/// | `status` | `interface`, optional | the ports, with their keys and peers |
/// | `explain` | `interface`, optional | why a port isn't secured |
/// | `counters` | `interface`, optional | frames by kind, in all and since the last clearing |
/// | `clear-counters` | | changes; nothing |
/// | `reload` | | changes; nothing, or the mistakes of the file, and nothing was taken |
///
/// No answer ever holds a key.
class Control {
 public:
  static constexpr int kVersion = 1;
  /// Reads the configuration again and takes it over; the mistakes because of which it wasn't.
  using Reload = std::function<std::vector<Mistake>()>;

  Control(Host& host, Reload reload) : host_(host), reload_(std::move(reload)) {}

  /// Whoever `mayChange` not is refused what changes something. A text that is no request is
  /// answered as well. The answer has no end of line.
  std::string answer(std::string_view request, bool mayChange);

 private:
  Host& host_;
  Reload const reload_;
};

}  // namespace Macsecd
