#pragma once

#include <map>

#include "lab/world/Event.h"
#include "lab/world/Simulation.h"

namespace Lab {

/// How long ports are secured: traffic passes both ways between the port and another one on its
/// wire. Both are open, and each receives with the key that the other sends with, from its SCI.
class SecuredTime final : public Audience {
 public:
  /// The simulation has to outlive it.
  explicit SecuredTime(Simulation const& simulation) : simulation_(simulation) {}

  void instantDone(double time) override;
  /// Port-seconds up to the last instant.
  double seconds() const { return seconds_; }

 private:
  size_t securedPorts() const;

  Simulation const& simulation_;
  double last_ = 0;
  size_t secured_ = 0;  ///< ports, since then
  double seconds_ = 0;
};

}  // namespace Lab
