#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "lab/judge/Expectations.h"
#include "lab/world/Simulation.h"
#include "tests/lab/Scene.h"

namespace Lab {

/// A scenario that was played to its end, with what happened.
class Played final : public Audience {
 public:
  explicit Played(std::string const& text, uint32_t seed = 1) : result_(parseScenario(text, "f")) {
    EXPECT_TRUE(result_.good()) << Macsecd::textOf(result_.diagnostics);
    if (!result_.good()) return;
    simulation_ = std::make_unique<Simulation>(result_.scenario, seed);
    expectations_ = std::make_unique<Expectations>(*simulation_);
    simulation_->audienceIs(*expectations_);
    simulation_->audienceIs(*this);
    simulation_->run();
  }

  Simulation& simulation() { return *simulation_; }
  /// What failed, each as a line.
  std::vector<std::string> failures() const {
    std::vector<std::string> lines;
    for (Failure const& failure : expectations_->failures()) lines.push_back(failure.text());
    return lines;
  }
  /// The times of all events of one kind at one switch.
  template <class What>
  std::vector<double> times(std::string const& switchName) const {
    std::vector<double> times;
    for (auto const& [time, name, what] : events_) {
      if (name == switchName && std::holds_alternative<What>(what)) times.push_back(time);
    }
    return times;
  }
  template <class What>
  std::vector<What> all(std::string const& switchName) const {
    std::vector<What> found;
    for (auto const& [time, name, what] : events_) {
      if (name == switchName && std::holds_alternative<What>(what)) {
        found.push_back(std::get<What>(what));
      }
    }
    return found;
  }
  /// The states of the ports of a switch, one after the other.
  std::vector<std::string> states(std::string const& switchName) const {
    std::vector<std::string> states;
    for (PortEvent const& event : all<PortEvent>(switchName)) {
      if (event.kind == EventKind::state) states.push_back(event.value);
    }
    return states;
  }
  /// How many frames a switch received, by verdict.
  size_t received(std::string const& switchName, std::string const& verdict) const {
    auto const frames = all<FramePassed>(switchName);
    return static_cast<size_t>(std::count_if(frames.begin(), frames.end(), [&](auto const& frame) {
      return frame.way == FrameWay::in && frame.verdict == verdict;
    }));
  }

  void happened(Event const& event) override {
    events_.push_back({event.time, event.switchName, event.what});
  }

 private:
  struct Kept {
    double time;
    std::string switchName;
    TreeWatch::What what;
  };

  ScenarioResult result_;
  std::unique_ptr<Simulation> simulation_;
  std::unique_ptr<Expectations> expectations_;
  std::vector<Kept> events_;
};

/// Two switches whose every delay is fixed, as in the shipped timeline: A opens at 7.001, B at
/// 8.001. The lines are added from line 19 on.
inline std::string pair(std::string const& lines, std::string const& until = "30") {
  auto sw = [](std::string const& name, std::string const& mac, std::string const& delay,
               std::string const& priority) {
    return "switch " + name + "\n  mac 02:00:00:00:00:" + mac + "\n  first delays " + delay +
           "\n  config:\n    profiles:\n      core: {key: {ckn: ab, cak: " + key128 +
           "}, key-server-priority: " + priority +
           "}\n    interfaces:\n      Ethernet1: {profile: core}\n";
  };
  return sw("A", "01", "0", "10") + sw("B", "02", "1", "20") +
         "wire A Ethernet1 to B Ethernet1\nrun until " + until + "\n" + lines + "\n";
}

}  // namespace Lab
