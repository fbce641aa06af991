#pragma once

#include <cmath>

#include "lab/world/Clock.h"

namespace Lab {

/// The clock of one switch, which may run faster or slower than the time of the simulation.
class LocalClock {
 public:
  double shown(double time) const { return begin_ + (time - since_) * rate_; }
  /// The first time at which it shows as much, from now on.
  double whenShown(double shown) const {
    double time = since_ + (shown - begin_) / rate_;
    while (this->shown(time) < shown) time = std::nextafter(time, kNever);
    return time;
  }
  /// From this time on it counts so many seconds in each; more than 0.
  void rateIs(double time, double rate) {
    begin_ = shown(time);
    since_ = time;
    rate_ = rate;
  }

 private:
  double since_ = 0;
  double begin_ = 0;  ///< what it showed then
  double rate_ = 1;
};

}  // namespace Lab
