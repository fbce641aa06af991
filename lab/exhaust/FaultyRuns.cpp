#include "lab/exhaust/FaultyRuns.h"

#include <fmt/format.h>

#include <fstream>
#include <utility>

#include "lab/exhaust/FaultyRun.h"

namespace Lab {

std::string contentsOf(std::string const& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

FaultyRuns::FaultyRuns(std::string const& file, std::vector<std::string> faults, uint32_t jobs)
    : file_(file),
      scenario_(contentsOf(file) + "\n"),
      faults_(std::move(faults)),
      jobs_(jobs),
      marks_(faults_.size(), 0),
      next_(jobs),
      workers_([this](uint32_t job, Workers::Tell const& tell) { work(job, tell); }) {
  for (uint32_t job = 0; job < jobs_; ++job) next_[job] = job;
  for (uint32_t job = 0; job < jobs_; ++job) workers_.start(job);
  workers_.listen([this](uint32_t job, std::string const& line) { hear(job, line); },
                  [this](uint32_t job, int status) { workerEnded(job, status); });
}

// In the worker.
void FaultyRuns::work(uint32_t job, Workers::Tell const& tell) const {
  for (size_t run = next_[job]; run < faults_.size(); run += jobs_) {
    tell(fmt::format("begin {}", run));
    FaultyRun const played = playFaulty(textOf(run), file_);
    tell(fmt::format("mark {}", played.mark));
    if (!played.verdict) continue;
    tell(fmt::format("failed {}: {}", played.verdict->what, played.verdict->findings.front()));
  }
}

// In the process that listens.
void FaultyRuns::hear(uint32_t job, std::string const& line) {
  std::string const kind = line.substr(0, line.find(' '));
  std::string const rest = line.substr(kind.size() + 1);
  if (kind == "begin") next_[job] = std::stoul(rest);
  if (kind == "mark") marks_[next_[job]] = std::stoul(rest);
  if (kind == "failed") failures_.push_back({next_[job], rest});
}

void FaultyRuns::workerEnded(uint32_t job, int status) {
  if (status == 0) return;
  failures_.push_back({next_[job], fmt::format("the process ended with status {}", status)});
  next_[job] += jobs_;
  workers_.start(job);
}

}  // namespace Lab
