#pragma once

#include <map>
#include <set>
#include <vector>

#include "runtime/TimerWheel.h"

namespace Linux {

/// Who wants to be called when, each at one time. What comes next is known without asking all.
template <class Who>
class Agenda {
 public:
  /// At this time, instead of any other that was given; `Zorn::never` for no more.
  void timeIs(Who const& who, double time) {
    auto const known = times_.find(who);
    if (known != times_.end()) {
      order_.erase({known->second, who});
      times_.erase(known);
    }
    if (time == Zorn::never) return;
    times_[who] = time;
    order_.insert({time, who});
  }
  void del(Who const& who) { timeIs(who, Zorn::never); }

  double nextTime() const { return order_.empty() ? Zorn::never : order_.begin()->first; }
  size_t size() const { return times_.size(); }
  /// Those whose time has come; they stay.
  std::vector<Who> due(double now) const {
    std::vector<Who> due;
    for (auto const& [time, who] : order_) {
      if (time > now) break;
      due.push_back(who);
    }
    return due;
  }

 private:
  std::map<Who, double> times_;
  std::set<std::pair<double, Who>> order_;
};

}  // namespace Linux
