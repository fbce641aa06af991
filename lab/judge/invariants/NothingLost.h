#pragma once

#include <set>
#include <utility>

#include "lab/judge/DataLoss.h"
#include "lab/judge/invariants/Calm.h"
#include "lab/judge/invariants/Invariant.h"

namespace Lab {

/// Once frames have come between two ports, and nothing disturbs, whatever changes the key: a timed
/// rekey, a packet number near its end, a recorded or made frame.
class NothingLost final : public Invariant {
 public:
  /// So many seconds a link must have been calm.
  static constexpr double kSettled = 20;

  NothingLost(Simulation const& simulation, Calm const& calm);

  void dataSent(double time, DataSent const& sent) override;
  void dataArrived(double time, DataArrived const& arrived) override;
  void happened(Event const& event) override;

 private:
  void judge();
  void judgeChange(PortName const& port);

  Calm const& calm_;
  DataLoss loss_;
  size_t judged_ = 0;
  std::set<std::pair<PortName, PortName>> passed_;  ///< who sends to whom, since both are open
};

}  // namespace Lab
