#include <string_view>

#include "fuzz/Require.h"
#include "lab/judge/invariants/Invariants.h"
#include "lab/scenario/ScenarioParser.h"
#include "lab/world/Simulation.h"

// Any octets as the text of a scenario: what is wrong with it is told at places within it, and what
// has no mistake can be played.

namespace {

using Fuzz::require;

// Longer ones are but read: they are as right, and take longer.
bool isShort(Lab::Scenario const& scenario) {
  constexpr double kLongest = 8, kLeastBetweenData = 0.5;
  constexpr size_t kMostSwitches = 3, kMostActions = 8;
  return scenario.runUntil <= kLongest && scenario.switches.size() <= kMostSwitches &&
         scenario.actions.size() <= kMostActions &&
         scenario.dataEvery.value_or(1) >= kLeastBetweenData;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* octets, size_t size) {
  std::string_view const text(reinterpret_cast<char const*>(octets), size);
  auto const read = Lab::parseScenario(text, "fuzz.scenario");
  for (auto const& diagnostic : read.diagnostics) {
    bool const isWhole = diagnostic.line >= 1 && diagnostic.column >= 1 &&
                         !diagnostic.what.empty() && !diagnostic.remedy.empty();
    require(isWhole, "a mistake is told without its place, or without what to do");
  }
  if (!read.good() || !isShort(read.scenario)) return 0;
  Lab::Simulation simulation(read.scenario, read.scenario.seed.value_or(1));
  simulation.run();
  static_cast<void>(simulation.nonceRepeats());
  return 0;
}
