#pragma once

#include <optional>
#include <string>
#include <vector>

#include "lab/judge/Finding.h"

namespace Lab {

/// An expectation that failed.
struct Failure {
  std::string file;
  int line;
  double time;
  std::string switchName;
  std::string expected;
  std::string is;

  /// "file:line: at 12.000 on A: expected that ..., but ..."
  std::string text() const;
};

/// Holds a simulation to what its scenario expects.
class Expectations final : public Audience {
 public:
  explicit Expectations(Simulation const& simulation);

  void happened(Event const& event) override;
  void instantDone(double time) override;
  /// What failed, in the order of the file. Complete when the simulation has ended.
  std::vector<Failure> failures() const;
  size_t size() const { return checks_.size(); }

 private:
  struct Check {
    Expectation const* expectation;
    bool decided = false;
    uint32_t lines = 0;  ///< syslog lines within the span
    std::optional<double> firstLine;
    std::optional<Failure> failure;
  };

  void hear(Check& check, Logs const& expected, SyslogLine const& line, double time);
  void see(Check& check, PortIs const& expected, PortEvent const& port, double time);
  void look(Check& check, double time);
  void lookAtLines(Check& check, Logs const& expected, double time);
  void judge(Check& check, double time, Finding const& finding);
  void fail(Check& check, double time, std::string is);
  Finding find(Expectation const& expectation) const;

  Simulation const& simulation_;
  Findings findings_;
  std::vector<Check> checks_;
};

}  // namespace Lab
