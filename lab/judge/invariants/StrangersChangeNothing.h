#pragma once

#include <map>
#include <string>
#include <tuple>

#include "lab/judge/invariants/Invariant.h"

namespace Lab {

class StrangersChangeNothing final : public Invariant {
 public:
  explicit StrangersChangeNothing(Simulation const& simulation)
      : Invariant(
            simulation, "strangers-change-nothing",
            "A frame that is refused changes nothing but counters, and no message of a member "
            "is taken twice by one process.") {}

  void acts(double time, Action const& action) override;
  void happened(Event const& event) override;

 private:
  // Who receives, the name of the key, and who has sent.
  using Way = std::tuple<PortName, std::string, std::string>;

  void forget(std::string const& switchName);
  void lookAtRefused(std::string const& switchName);
  void lookAtAccepted(Way const& way, uint32_t messageNumber);

  std::map<std::string, uint64_t> refusedWrites_;  ///< by switch
  std::map<Way, uint32_t> messageNumbers_;
};

}  // namespace Lab
