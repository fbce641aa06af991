#pragma once

#include <map>
#include <optional>
#include <string>

#include "host/port/PortWatch.h"

namespace Macsecd {

/// What has come about on the ports of a host since this began: counts and times for a metric.
class PortHistory {
 public:
  struct Port {
    uint64_t rekeys = 0;    ///< SAKs for transmit that took the place of another one
    uint64_t openings = 0;  ///< how often traffic became possible
    /// Seconds that the last opening took, from the link or the last closing on; none before the
    /// first.
    std::optional<double> timeToSecure;
  };

  /// As with `PortWatch`.
  explicit PortHistory(Host& host);

  Port const& port(std::string const& interface) const;

 private:
  struct Now {
    Port port;
    bool hasSak = false;
    std::optional<double> waitsSince;
  };
  void happened(PortEvent const& event);

  std::map<std::string, Now> ports_;
  PortWatch watch_;
};

}  // namespace Macsecd
