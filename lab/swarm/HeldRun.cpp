#include "lab/swarm/HeldRun.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/explain/Explain.h"
#include "lab/judge/invariants/Invariants.h"
#include "lab/judge/invariants/Link.h"

namespace Lab {

namespace {

constexpr double kBetweenLooks = 0.5;

// In which states ports are, once in a while, and what was done.
class Visits final : public Audience {
 public:
  Visits(Simulation const& simulation, HeldRun& run) : simulation_(simulation), run_(run) {}

  void acts(double, Action const& action) override {
    std::string const text = withoutTime(action.text);
    ++run_.acted[text.substr(0, text.find(' '))];
  }
  void instantDone(double time) override {
    if (time < nextLook_) return;
    nextLook_ = time + kBetweenLooks;
    for (size_t wire = 0; wire < simulation_.scenario().wires.size(); ++wire) {
      for (LinkEnd const& end : endsOf(simulation_, wire)) look(end);
    }
  }

 private:
  void look(LinkEnd const& end) {
    Vesk::WorldScope const scope(end.owner.world());
    auto const explanation = explain(end.owner.host(), end.intfId);
    auto const wordOf = [](auto const& stage) { return stage ? Vesk::stringValue(*stage) : "-"; };
    auto const& causes = explanation.causes;
    run_.states.insert(
        fmt::format("{}, {}, {}, {}", end.passes() ? "open" : "not open",
                    wordOf(explanation.stages.key), wordOf(explanation.stages.guard),
                    causes.empty() ? "no cause" : Vesk::stringValue(causes.front().kind)));
  }

  Simulation const& simulation_;
  HeldRun& run_;
  double nextLook_ = 0;
};

}  // namespace

HeldRun playHeld(Scenario const& scenario, std::vector<std::string> const& names) {
  HeldRun run;
  Simulation simulation(scenario, scenario.seed.value());
  Invariants invariants(simulation);
  Visits visits(simulation, run);
  simulation.audienceIs(visits);
  simulation.run();
  run.breaches = invariants.breaches();
  std::erase_if(run.breaches, [&](Breach const& breach) {
    return !names.empty() && std::ranges::find(names, breach.invariant) == names.end();
  });
  run.seconds = simulation.now();
  return run;
}

}  // namespace Lab
