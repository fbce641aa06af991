#include "lab/exhaust/Exhaust.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>

#include "lab/exhaust/FaultyRun.h"
#include "lab/exhaust/FaultyRuns.h"
#include "lab/scenario/ScenarioParser.h"

namespace Lab {

namespace {

using Lines = std::vector<std::string>;

constexpr size_t kToldAtMost = 10;

class Exhausting {
 public:
  Exhausting(ExhaustOptions const& options, std::ostream& out) : options_(options), out_(out) {}

  int run(Simulation const& alone, size_t mark) {
    Lines faults;
    for (SmallFault const kind : options_.faults) {
      Lines const all = allOf(kind, alone);
      for (std::string const& line : all) faults.push_back(line + "\n");
      out_ << fmt::format("{:>7} of the kind {}\n", all.size(), wordOf(kind)) << std::flush;
    }
    FaultyRuns const singles(options_.file, faults, options_.jobs);
    tell("single faults", singles);
    if (!options_.pairs) return failed_ ? 1 : 0;
    FaultyRuns const pairs(options_.file, pairsOf(singles, mark), options_.jobs);
    tell("pairs", pairs);
    return failed_ ? 1 : 0;
  }

 private:
  // Of those that change something. A process dies once.
  Lines pairsOf(FaultyRuns const& singles, size_t mark) const {
    Lines changing;
    for (size_t run = 0; run < singles.size(); ++run) {
      if (singles.mark(run) != mark) changing.push_back(singles.faults(run));
    }
    out_ << fmt::format("{:>7} single faults change what happens\n", changing.size());
    Lines pairs;
    for (size_t first = 0; first < changing.size(); ++first) {
      for (size_t second = first + 1; second < changing.size(); ++second) {
        if (killedBy(changing[first]) && killedBy(changing[first]) == killedBy(changing[second])) {
          continue;
        }
        pairs.push_back(changing[first] + changing[second]);
      }
    }
    return pairs;
  }
  // The switch; nothing for another fault.
  static std::optional<std::string> killedBy(std::string const& line) {
    std::istringstream words(line);
    std::string at, time, what, name;
    words >> at >> time >> what >> name;
    return what == "kill" ? std::optional(name) : std::nullopt;
  }

  void tell(char const* what, FaultyRuns const& runs) {
    out_ << fmt::format("{:>7} runs with {}, {} failed\n", runs.size(), what,
                        runs.failures().size());
    for (FaultyRuns::Failure const& failure : runs.failures()) {
      if (failed_ == kToldAtMost) break;
      auto const file =
          std::filesystem::path(options_.keep) / fmt::format("exhaust-{}.scenario", ++failed_);
      std::ofstream(file, std::ios::trunc) << runs.textOf(failure.run);
      out_ << "FAILED  " << file.string() << "\n  " << failure.what << '\n' << std::flush;
    }
  }

  ExhaustOptions const& options_;
  std::ostream& out_;
  size_t failed_ = 0;
};

}  // namespace

int exhaust(ExhaustOptions const& options, std::ostream& out, std::ostream& err) {
  ScenarioResult const read = readScenario(options.file);
  if (!read.good()) {
    err << Macsecd::textOf(read.diagnostics);
    return 2;
  }
  std::filesystem::create_directories(options.keep);
  FaultyRun const alone = playFaulty(contentsOf(options.file), options.file);
  if (alone.verdict) {
    err << "macsec-lab: " << options.file << " fails without any fault: " << alone.verdict->what
        << '\n';
    return 2;
  }
  Simulation simulation(read.scenario, read.scenario.seedOrDefault());
  simulation.run();
  out << options.file << '\n';
  return Exhausting(options, out).run(simulation, alone.mark);
}

}  // namespace Lab
