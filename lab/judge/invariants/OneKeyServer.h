#pragma once

#include "lab/judge/invariants/Calm.h"
#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class OneKeyServer final : public Invariant {
 public:
  /// So many seconds a link must have been calm.
  static constexpr double kSettled = 30;

  OneKeyServer(Simulation const& simulation, Calm const& calm);

  void happened(Event const& event) override;
  void instantDone(double time) override;

 private:
  void countPrincipals(LinkEnd const& end);
  void lookAtServers(Link const& link);

  Calm const& calm_;
};

}  // namespace Lab
