#include "lab/swarm/SwarmReport.h"

#include <fmt/format.h>

#include <ostream>

namespace Lab {

namespace {

constexpr uint32_t kBetweenLines = 100;
constexpr uint32_t kBar = 40;
constexpr char const* kClear = "\r\x1b[K";

double hours(SwarmTally const& tally) { return tally.seconds / 3600; }

}  // namespace

void SwarmReport::ran(SwarmTally const& tally) {
  if (options_.showsProgress) showProgress(tally);
  if (tally.runs % kBetweenLines != 0) return;
  if (options_.showsProgress) out_ << kClear;
  out_ << fmt::format("{:7} runs, {:7.1f} virtual hours, {} states, {} failed\n", tally.runs,
                      hours(tally), tally.states.size(), tally.failures.size())
       << std::flush;
}

void SwarmReport::showProgress(SwarmTally const& tally) {
  uint32_t const done = options_.runs ? tally.runs * kBar / options_.runs : kBar;
  out_ << fmt::format("\r[{:<{}}] {} of {}", std::string(done, '#'), kBar, tally.runs,
                      options_.runs)
       << std::flush;
}

void SwarmReport::failed(SwarmFailure const& failure) {
  if (options_.showsProgress) out_ << kClear;
  out_ << fmt::format("FAILED  run {}: {}\n        macsec-lab play --show {}\n", failure.number,
                      failure.what, failure.scenario)
       << std::flush;
}

void SwarmReport::end(SwarmTally const& tally) {
  if (options_.showsProgress) out_ << kClear;
  out_ << fmt::format("\n{} runs, {:.1f} virtual hours, {} states of ports, {} failed\n",
                      tally.runs, hours(tally), tally.states.size(), tally.failures.size());
  out_ << "\nDone to the switches and wires:\n";
  for (auto const& [kind, count] : tally.acted) out_ << fmt::format("  {:10} {}\n", kind, count);
}

}  // namespace Lab
