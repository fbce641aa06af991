#include "lab/Play.h"

#include <fmt/format.h>

#include <fstream>
#include <ostream>

#include "lab/report/Captures.h"
#include "lab/report/Events.h"
#include "lab/report/StoredState.h"
#include "lab/report/Timeline.h"
#include "lab/scenario/ScenarioParser.h"
#include "lab/verdict/Judges.h"

namespace Lab {

namespace {

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

  /// False if something speaks against the run.
  bool play(Scenario const& scenario) {
    Simulation simulation(scenario, options_.seed.value_or(scenario.seedOrDefault()));
    Judges judges(simulation);
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
    simulation.run();
    std::vector<std::filesystem::path> states;
    if (!options_.stateDir.empty()) states = writeStoredState(simulation, options_.stateDir);
    if (options_.show) {
      showEnd(simulation);
      if (captures) showFiles("Capture", captures->paths());
      showFiles("Stored state", states);
    }
    auto const verdict = judges.verdict();
    if (!verdict) {
      out_ << fmt::format("ok      {} ({} expectations)\n", scenario.file, judges.expectations());
      return true;
    }
    out_ << fmt::format("FAILED  {} ({})\n", scenario.file, verdict->what);
    for (std::string const& finding : verdict->findings) out_ << "  " << finding << '\n';
    return false;
  }

 private:
  void showEnd(Simulation const& simulation) {
    out_ << fmt::format("\nAt {}:\n\n", timeText(simulation.now()));
    writeStatusTable(out_, simulation);
    writeCounters(out_, simulation);
    out_ << '\n';
  }

  void showFiles(char const* what, std::vector<std::filesystem::path> const& paths) {
    for (auto const& path : paths) out_ << what << ": " << path.string() << '\n';
    if (!paths.empty()) out_ << '\n';
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
