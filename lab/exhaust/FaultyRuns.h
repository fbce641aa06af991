#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "lab/swarm/Workers.h"

namespace Lab {

/// Many runs of one scenario, each with faults of its own, played in several processes.
class FaultyRuns {
 public:
  struct Failure {
    size_t run;
    std::string what;  ///< speaks against it
  };

  /// Plays a run of the scenario in `file` for each of `faults`: lines of a scenario, each with its
  /// end. Returns when all are over.
  FaultyRuns(std::string const& file, std::vector<std::string> faults, uint32_t jobs);

  size_t size() const { return faults_.size(); }
  std::string const& faults(size_t run) const { return faults_[run]; }
  /// The scenario with the faults of a run.
  std::string textOf(size_t run) const { return scenario_ + faults_[run]; }
  /// As `FaultyRun` has it.
  size_t mark(size_t run) const { return marks_[run]; }
  std::vector<Failure> const& failures() const { return failures_; }

 private:
  void work(uint32_t job, Workers::Tell const& tell) const;
  void hear(uint32_t job, std::string const& line);
  void workerEnded(uint32_t job, int status);

  std::string const& file_;
  std::string const scenario_;
  std::vector<std::string> const faults_;
  uint32_t const jobs_;
  std::vector<size_t> marks_;
  std::vector<size_t> next_;  ///< run of each worker
  std::vector<Failure> failures_;
  Workers workers_;
};

/// The text of a file.
std::string contentsOf(std::string const& path);

}  // namespace Lab
