#pragma once

#include <iosfwd>

#include "lab/world/Simulation.h"

namespace Lab {

/// Tells what happens, line by line with virtual times: what the scenario does, syslog lines, and
/// ports that open, close, come and go.
class Timeline final : public Audience {
 public:
  Timeline(std::ostream& out, Scenario const& scenario);
  void happened(Event const& event) override;
  void acted(double time, std::string const& text) override;

 private:
  void line(double time, std::string const& who, std::string const& text);

  std::ostream& out_;
  size_t width_;  ///< of the longest name of a switch
};

/// Every port as it stands: state, principal key, key server, SAK and association number in use,
/// SSCI, peers.
void writeStatusTable(std::ostream& out, Simulation const& simulation);
/// The frames that each switch has counted.
void writeCounters(std::ostream& out, Simulation const& simulation);

}  // namespace Lab
