#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Host.h"
#include "host/control/Subscriptions.h"
#include "host/control/TraceWish.h"
#include "host/control/Trial.h"
#include "host/text/Diagnostic.h"

namespace Macsecd {

/// Answers what an operator's tool asks of a switch: one JSON object for one JSON object.
///
///     {"version": 2, "command": "explain", "interface": "Ethernet1"}
///     {"version": 2, "ok": true, "result": {...}}
///     {"version": 2, "ok": false, "error": "there is no command 'explian'", "remedy": "..."}
///
/// | Command | Further members | Result |
/// |---|---|---|
/// | `status` | `interface`, optional | the ports, with their keys and peers |
/// | `explain` | `interface`, optional | why a port isn't secured |
/// | `counters` | `interface`, `since-clear`, optional | frames by kind, in all and since cleared |
/// | `clear-counters` | | changes; nothing |
/// | `rekey` | `interface` | changes; the new SAK, or when there will be one |
/// | `reload` | | changes; nothing, or the mistakes of the file, and nothing was taken |
/// | `try` | `file`, `timeout` | changes; the same of this file, which goes again after that time |
/// | `keep` | | changes; the file on trial, which stays |
/// | `trial` | | the file that was tried last, and how that goes or went |
/// | `watch` | `interface`, optional | nothing, and then events as they come |
/// | `capture` | `interface` | nothing, and then frames as they pass |
/// | `trace` | `on`, `level`, `handles` | changes; nothing |
///
/// No answer ever holds a key.
class Control {
 public:
  /// Reads the configuration again and takes it over; the diagnostics because of which it wasn't.
  using Reload = std::function<std::vector<Diagnostic>()>;
  /// Puts what is to be traced into force; a fault says why it can't be.
  using Trace = std::function<Result<>(TraceWish const&)>;
  struct Ways {
    Reload reload;
    Subscriptions::Tell tell = nullptr;  ///< null: nobody can subscribe
    Trace trace = nullptr;               ///< null: nothing can be traced
    Trial* trial = nullptr;              ///< null: nothing can be tried
  };

  Control(Host& host, Reload reload) : Control(host, Ways{std::move(reload)}) {}
  Control(Host& host, Ways ways);

  /// Whoever `mayChange` not is refused what changes something. A text that is no request is
  /// answered as well. The answer has no end of line. `connection` is whom to tell what is
  /// subscribed to; it has to be ended.
  std::string answer(std::string_view request, bool mayChange, uint64_t connection = 0);
  /// The connection is told nothing any more.
  void connectionEnded(uint64_t connection) { subscriptions_.end(connection); }
  /// Whether the connection has subscribed to something.
  bool isToBeTold(uint64_t connection) const { return subscriptions_.has(connection); }

 private:
  Host& host_;
  Ways const ways_;
  Subscriptions subscriptions_;
};

}  // namespace Macsecd
