#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "lab/world/Event.h"
#include "lab/world/Simulation.h"

namespace Lab {

/// Which frames of the test flow were lost between two ports that were both open: when the frame
/// left, and when it came. What a wire that is cut loses doesn't count.
class DataLoss final : public Audience {
 public:
  struct Lost {
    double sentAt;
    PortName from, to;
    uint64_t number;
    std::string why;
    std::string text() const;
  };

  /// The simulation has to outlive it.
  explicit DataLoss(Simulation const& simulation) : simulation_(simulation) {}

  void dataSent(double time, DataSent const& sent) override;
  void dataArrived(double time, DataArrived const& arrived) override;

  std::vector<Lost> const& lost() const { return lost_; }
  /// How many frames came to a port that was open, as they were sent.
  uint64_t passed() const { return passed_; }

 private:
  bool isOpen(PortName const& port) const;

  Simulation const& simulation_;
  std::set<std::tuple<PortName, PortName, uint64_t>> expected_;  ///< from, to, number
  std::vector<Lost> lost_;
  uint64_t passed_ = 0;
};

}  // namespace Lab
