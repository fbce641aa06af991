#pragma once

#include <map>

#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class CountersAddUp final : public Invariant {
 public:
  explicit CountersAddUp(Simulation const& simulation)
      : Invariant(
            simulation, "counters-add-up",
            "A port counts as sent what has left it, and as received or refused what has come "
            "to it.") {}

  void happened(Event const& event) override;
  void ended() override;

 private:
  struct Frames {
    uint64_t sent = 0;
    uint64_t accepted = 0;
    uint64_t refused = 0;
  };
  void compare(PortName const& port, Frames const& seen);

  std::map<PortName, Frames> seen_;
};

}  // namespace Lab
