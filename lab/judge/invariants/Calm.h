#pragma once

#include <algorithm>
#include <vector>

#include "lab/judge/invariants/Link.h"
#include "lab/world/Event.h"

namespace Lab {

/// For how long nothing has disturbed a link: both switches run with MACsec on, both interfaces
/// have a profile, their links, devices and hardware are well, the wire has no fault and no third
/// member, and nobody has done anything to either end, the port doctor included. Recorded or made
/// frames that arrive don't disturb, and neither does who looks.
class Calm final : public Audience {
 public:
  explicit Calm(Simulation const& simulation)
      : simulation_(simulation),
        disturbed_(simulation.scenario().wires.size(), 0),
        visited_(disturbed_) {}

  void acts(double time, Action const& action) override;
  void happened(Event const& event) override;
  void faultsEnd(double time) override { std::ranges::fill(disturbed_, time); }
  void instantDone(double time) override;

  /// In seconds.
  double of(size_t wire) const { return simulation_.now() - disturbed_[wire]; }
  /// The same, and no recorded or made frame has come.
  double withoutStrangers(size_t wire) const {
    return simulation_.now() - std::max(disturbed_[wire], visited_[wire]);
  }

 private:
  bool isDisturbed(size_t wire) const;
  using Times = std::vector<double>;
  void mark(Times& times, std::string const& switchName, double time) const;

  Simulation const& simulation_;
  Times disturbed_;  ///< when each wire was last
  Times visited_;    ///< when a recorded or made frame came to it last
};

}  // namespace Lab
