#pragma once

#include <map>
#include <vector>

#include "host/explain/Explain.h"
#include "lab/judge/invariants/Calm.h"
#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class ExplainNamesCauses final : public Invariant {
 public:
  /// In seconds: how long an open link must have been calm, and how long a change of the key may
  /// take.
  static constexpr double kSettled = 30, kChange = 8;

  ExplainNamesCauses(Simulation const& simulation, Calm const& calm);

  void instantDone(double time) override;

 private:
  static constexpr double kBetweenLooks = 0.5;  // seconds

  void look(size_t wire, LinkEnd const& end);
  void lookAtOpen(size_t wire, LinkEnd const& end, std::vector<Macsecd::Cause> const& causes);

  Calm const& calm_;
  std::map<PortName, double> changes_;  ///< since when a port names one
};

}  // namespace Lab
