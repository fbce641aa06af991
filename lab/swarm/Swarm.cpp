#include "lab/swarm/Swarm.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <sstream>

#include "lab/scenario/ScenarioParser.h"
#include "lab/swarm/HeldRun.h"
#include "lab/swarm/Reducer.h"
#include "lab/swarm/SwarmReport.h"
#include "lab/swarm/Workers.h"
#include "runtime/Assert.h"

namespace Lab {

namespace {

constexpr char const* kEndsProcess = "process-goes-on";

// How a text breaks an invariant first; nothing if it has mistakes, or wouldn't show it when it is
// played.
std::optional<Breach> breachOf(std::string const& invariant, std::string const& text) {
  auto const read = parseScenario(text, "swarm");
  bool const isWhole = read.good() && read.scenario.seed && read.scenario.invariantsHold;
  if (!isWhole || read.scenario.title.empty()) return {};
  auto const breaches = playHeld(read.scenario, {invariant}).breaches;
  return breaches.empty() ? std::nullopt : std::optional(breaches.front());
}

// One swarm: its workers, and what they have told.
class Swarming {
 public:
  Swarming(SwarmOptions const& options, std::ostream& out)
      : options_(options),
        report_(options, out),
        workers_([this](uint32_t job, Workers::Tell const& tell) { work(job, tell); }),
        next_(options.jobs),
        begun_(options.jobs, 0) {
    for (uint32_t job = 0; job < options.jobs; ++job) next_[job] = options.from + job;
  }

  SwarmTally const& run() {
    std::filesystem::create_directories(options_.keep);
    for (uint32_t job = 0; job < options_.jobs; ++job) workers_.start(job);
    workers_.listen([this](uint32_t job, std::string const& line) { hear(job, line); },
                    [this](uint32_t job, int status) { workerEnded(job, status); });
    report_.end(tally_);
    return tally_;
  }

 private:
  // In the worker.
  void work(uint32_t job, Workers::Tell const& tell) {
    uint32_t const end = options_.from + options_.runs;
    for (uint32_t number = next_[job]; number < end; number += options_.jobs) {
      if (options_.isTimeUp && options_.isTimeUp()) return;
      tell(fmt::format("begin {}", number));
      bool const holds = play(number, tell);
      if (!holds && options_.untilFailure) return;
    }
  }
  bool play(uint32_t number, Workers::Tell const& tell) {
    std::string const text = options_.draw(number);
    auto const read = parseScenario(text, "swarm");
    VESK_ASSERT(read.good());
    HeldRun const run = playHeld(read.scenario, options_.invariants);
    for (auto const& [kind, count] : run.acted) tell(fmt::format("acted {} {}", count, kind));
    for (std::string const& state : run.states) tell("state " + state);
    if (!run.breaches.empty()) {
      std::string const& invariant = run.breaches.front().invariant;
      std::string const small = reduced(text, invariant);
      keep(number, small);
      tell("failure " + breachOf(invariant, small).value().text());
    }
    tell(fmt::format("run {}", run.seconds));
    return run.breaches.empty();
  }
  std::string reduced(std::string const& text, std::string const& invariant) const {
    if (options_.untilFailure) return text;
    auto const fails = [&](std::string const& one) { return breachOf(invariant, one).has_value(); };
    return Reducer(fails).reduced(text);
  }

  std::string fileOf(uint32_t number) const {
    return (std::filesystem::path(options_.keep) / fmt::format("swarm-{}.scenario", number))
        .string();
  }
  void keep(uint32_t number, std::string const& text) const {
    std::ofstream(fileOf(number), std::ios::trunc) << text;
  }

  // In the process that listens.
  void hear(uint32_t job, std::string const& line) {
    std::istringstream words(line);
    std::string kind, rest;
    words >> kind;
    if (kind == "begin") {
      words >> begun_[job];
      next_[job] = begun_[job] + options_.jobs;
    } else if (kind == "acted") {
      uint64_t count = 0;
      words >> count >> rest;
      tally_.acted[rest] += count;
    } else if (kind == "state") {
      tally_.states.insert(line.substr(kind.size() + 1));
    } else if (kind == "failure") {
      fail(begun_[job], line.substr(kind.size() + 1));
    } else if (kind == "run") {
      double seconds = 0;
      words >> seconds;
      ++tally_.runs;
      tally_.seconds += seconds;
      begun_[job] = 0;
      report_.ran(tally_);
    }
  }
  void fail(uint32_t number, std::string what) {
    tally_.failures.push_back({number, std::move(what), fileOf(number)});
    report_.failed(tally_.failures.back());
  }
  // A run that ends its process is reduced in processes of its own.
  void workerEnded(uint32_t job, int status) {
    if (status == 0) return;
    uint32_t const number = std::exchange(begun_[job], 0);
    auto const ends = [](std::string const& text) {
      return endsItsProcess([&] { static_cast<void>(breachOf(kEndsProcess, text)); });
    };
    std::string const text = options_.draw(number);
    keep(number, options_.untilFailure ? text : Reducer(ends).reduced(text));
    ++tally_.runs;
    fail(number, fmt::format("{}: the process ended with status {}", kEndsProcess, status));
    if (!options_.untilFailure) workers_.start(job);
  }

  SwarmOptions const& options_;
  SwarmReport report_;
  Workers workers_;
  std::vector<uint32_t> next_;   ///< run of each worker
  std::vector<uint32_t> begun_;  ///< run that each worker is at; 0 for none
  SwarmTally tally_;
};

}  // namespace

int swarm(SwarmOptions const& options, std::ostream& out) {
  return Swarming(options, out).run().failures.empty() ? 0 : 1;
}

}  // namespace Lab
