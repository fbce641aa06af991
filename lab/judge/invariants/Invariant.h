#pragma once

#include <string>
#include <vector>

#include "lab/world/Event.h"
#include "lab/world/Simulation.h"

namespace Lab {

/// An invariant that didn't hold.
struct Breach {
  std::string invariant;  ///< its name
  double time;
  std::string what;
  /// "one-key-server: at 12.000: ..."
  std::string text() const;
};

/// What holds at every instant of every run, whatever is done to switches and wires. It hears what
/// happens, and tells each breach once.
class Invariant : public Audience {
 public:
  /// The simulation has to outlive it. `name` is one word, `sentence` says what holds.
  Invariant(Simulation const& simulation, std::string name, std::string sentence)
      : simulation_(simulation), name_(std::move(name)), sentence_(std::move(sentence)) {}

  std::string const& name() const { return name_; }
  std::string const& sentence() const { return sentence_; }
  /// The run is over.
  virtual void ended() {}
  /// The first few.
  std::vector<Breach> const& breaches() const { return breaches_; }

 protected:
  void breaks(std::string what);
  /// Whether so many seconds have passed since this was true last.
  bool isDue(double time, double seconds);
  Simulation const& simulation() const { return simulation_; }
  double now() const { return simulation_.now(); }

 private:
  Simulation const& simulation_;
  std::string const name_;
  std::string const sentence_;
  std::vector<Breach> breaches_;
  double nextDue_ = 0;
};

}  // namespace Lab
