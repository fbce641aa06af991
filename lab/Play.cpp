#include "lab/Play.h"

#include <fmt/format.h>

#include <fstream>
#include <ostream>

#include "lab/judge/DataLoss.h"
#include "lab/judge/Expectations.h"
#include "lab/judge/invariants/Invariants.h"
#include "lab/report/Captures.h"
#include "lab/report/Events.h"
#include "lab/report/Timeline.h"
#include "lab/scenario/ScenarioParser.h"

namespace Lab {

namespace {

constexpr uint32_t kDefaultSeed = 1;

std::vector<Scenario> readAll(PlayOptions const& options,
                              std::vector<Macsecd::Diagnostic>& diagnostics) {
  std::vector<Scenario> scenarios;
  for (std::string const& file : options.files) {
    ScenarioResult result = readScenario(file);
    diagnostics.insert(diagnostics.end(), result.diagnostics.begin(), result.diagnostics.end());
    scenarios.push_back(std::move(result.scenario));
  }
  return scenarios;
}

class Player {
 public:
  Player(PlayOptions const& options, std::ostream& out) : options_(options), out_(out) {
    if (options.events.empty()) return;
    eventsFile_.open(options.events, std::ios::trunc);
    if (!eventsFile_) {
      throw FileError("can't write " + options.events +
                      "; name a file that may be written with --events");
    }
  }

  /// False if an expectation failed.
  bool play(Scenario const& scenario) {
    Simulation simulation(scenario, options_.seed.value_or(scenario.seed.value_or(kDefaultSeed)));
    Expectations expectations(simulation);
    simulation.audienceIs(expectations);
    Events events(eventsFile_);
    if (eventsFile_.is_open()) simulation.audienceIs(events);
    std::optional<Captures> captures;
    if (!options_.pcapDir.empty()) {
      simulation.audienceIs(captures.emplace(scenario, options_.pcapDir));
    }
    Timeline timeline(out_, scenario);
    if (options_.show) {
      out_ << scenario.title << "\n\n";
      simulation.audienceIs(timeline);
    }
    DataLoss dataLoss(simulation);
    std::optional<Invariants> invariants;
    if (scenario.invariantsHold) {
      invariants.emplace(simulation);
    } else {
      simulation.audienceIs(dataLoss);
    }
    simulation.run();
    if (options_.show) showEnd(simulation, captures);
    return judge(scenario, expectations) && judgeNonces(scenario, simulation) &&
           judgeData(scenario, dataLoss) && judgeInvariants(scenario, invariants);
  }

 private:
  void showEnd(Simulation const& simulation, std::optional<Captures> const& captures) {
    out_ << fmt::format("\nAt {}:\n\n", timeText(simulation.now()));
    writeStatusTable(out_, simulation);
    writeCounters(out_, simulation);
    out_ << '\n';
    if (!captures) return;
    for (auto const& path : captures->paths()) out_ << "Capture: " << path.string() << '\n';
    out_ << '\n';
  }

  bool judge(Scenario const& scenario, Expectations const& expectations) {
    std::vector<Failure> const failures = expectations.failures();
    if (failures.empty()) {
      out_ << fmt::format("ok      {} ({} expectations)\n", scenario.file, expectations.size());
      return true;
    }
    out_ << fmt::format("FAILED  {} ({} of {} expectations)\n", scenario.file, failures.size(),
                        expectations.size());
    for (Failure const& failure : failures) out_ << "  " << failure.text() << '\n';
    return false;
  }

  bool judgeNonces(Scenario const& scenario, Simulation& simulation) {
    auto const& repeats = simulation.nonceRepeats();
    if (repeats.empty()) return true;
    out_ << fmt::format("FAILED  {} (nonces are repeated)\n", scenario.file);
    for (std::string const& repeat : repeats) out_ << "  " << repeat << '\n';
    return false;
  }

  bool judgeData(Scenario const& scenario, DataLoss const& dataLoss) {
    if (dataLoss.lost().empty()) return true;
    out_ << fmt::format("FAILED  {} (data is lost)\n", scenario.file);
    for (DataLoss::Lost const& lost : dataLoss.lost()) out_ << "  " << lost.text() << '\n';
    return false;
  }

  bool judgeInvariants(Scenario const& scenario, std::optional<Invariants>& invariants) {
    auto const breaches = invariants ? invariants->breaches() : std::vector<Breach>();
    if (breaches.empty()) return true;
    out_ << fmt::format("FAILED  {} (invariants are broken)\n", scenario.file);
    for (Breach const& breach : breaches) out_ << "  " << breach.text() << '\n';
    return false;
  }

  PlayOptions const& options_;
  std::ostream& out_;
  std::ofstream eventsFile_;
};

}  // namespace

int play(PlayOptions const& options, std::ostream& out, std::ostream& err) {
  std::vector<Macsecd::Diagnostic> diagnostics;
  std::vector<Scenario> const scenarios = readAll(options, diagnostics);
  if (!diagnostics.empty()) {
    err << Macsecd::textOf(diagnostics);
    return 2;
  }
  try {
    Player player(options, out);
    bool held = true;
    for (Scenario const& scenario : scenarios) held = player.play(scenario) && held;
    return held ? 0 : 1;
  } catch (FileError const& error) {
    err << "macsec-lab: " << error.what() << '\n';
    return 2;
  }
}

}  // namespace Lab
