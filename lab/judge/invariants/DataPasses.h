#pragma once

#include <map>

#include "lab/judge/invariants/Calm.h"
#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class DataPasses final : public Invariant {
 public:
  /// So many seconds a link must have been calm.
  static constexpr double kSettled = 10;
  /// So long both ends may be open with different keys: a key server that has made a key for a peer
  /// which has gone misses it after a life time, goes over to the fallback key, makes one of that
  /// when the guard on new keys has expired, and the peer learns of it within a period.
  static constexpr double kLongest = 15;

  DataPasses(Simulation const& simulation, Calm const& calm);

  void dataSent(double time, DataSent const& sent) override;
  void dataArrived(double time, DataArrived const& arrived) override;
  void instantDone(double time) override;

 private:
  static constexpr double kBetweenLooks = 1;  // seconds

  void look(bool isMeant, LinkEnd const& from, LinkEnd const& to);

  Calm const& calm_;
  /// When both ends were open and data came last, by who sends and who receives.
  std::map<std::pair<PortName, PortName>, double> passed_;
};

}  // namespace Lab
