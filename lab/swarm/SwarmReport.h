#pragma once

#include <iosfwd>

#include "lab/swarm/Swarm.h"

namespace Lab {

/// Tells how a swarm goes: a line for each hundred runs, each failure at once, and a summary.
class SwarmReport {
 public:
  SwarmReport(SwarmOptions const& options, std::ostream& out) : options_(options), out_(out) {}

  void ran(SwarmTally const& tally);
  void failed(SwarmFailure const& failure);
  void end(SwarmTally const& tally);

 private:
  void showProgress(SwarmTally const& tally);

  SwarmOptions const& options_;
  std::ostream& out_;
};

}  // namespace Lab
