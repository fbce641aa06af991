#include <fmt/format.h>

#include <algorithm>

#include "lab/judge/Finding.h"

// What is expected of whole switches.

namespace Lab {

namespace {

char const* plural(uint64_t count) { return count == 1 ? "" : "s"; }

long exits(SwitchRecord const& record, std::optional<int> const& status) {
  return std::count_if(record.exits.begin(), record.exits.end(),
                       [&](int one) { return !status || one == *status; });
}

FipsMode modeOf(Macsec::FipsStatus const& status) {
  if (!status.fipsModeSuccess()) return FipsMode::unset;
  return status.fipsRestrictions() ? FipsMode::on : FipsMode::off;
}

char const* wordOf(FipsMode mode) {
  return mode == FipsMode::on ? "on" : mode == FipsMode::off ? "off" : "unset";
}

std::string inOneLine(std::vector<Macsecd::Diagnostic> const& diagnostics) {
  std::string text;
  for (auto const& diagnostic : diagnostics) text += (text.empty() ? "" : "; ") + diagnostic.text();
  return text;
}

}  // namespace

SwitchRecord const& Findings::recordOf(std::string const& switchName) const {
  return simulation_.switchOf(switchName).record();
}

Finding Findings::of(HasExited const& expected) const {
  long times = exits(recordOf(expected.switchName), expected.status);
  if (expected.since) {
    times -= exits(simulation_.markedRecord(*expected.since, expected.switchName), expected.status);
  }
  return {times == static_cast<long>(expected.times),
          fmt::format("{} has exited {} time{}", expected.switchName, times,
                      plural(static_cast<uint64_t>(times)))};
}

Finding Findings::of(IsRunning const& expected) const {
  bool const running = simulation_.switchOf(expected.switchName).host().running();
  return {running == expected.running,
          fmt::format("{} is {}running", expected.switchName, running ? "" : "not ")};
}

Finding Findings::of(HasFipsMode const& expected) const {
  FipsMode const mode = modeOf(statusOf(expected.switchName).fipsStatus());
  return {mode == expected.mode,
          fmt::format("{} has FIPS mode {}", expected.switchName, wordOf(mode))};
}

Finding Findings::of(HasDelayProtection const& expected) const {
  bool const on = statusOf(expected.switchName).delayProtection();
  return {on == expected.on,
          fmt::format("{} has {}delay protection", expected.switchName, on ? "" : "no ")};
}

Finding Findings::of(HasMkpduPeriod const& expected) const {
  double const seconds = statusOf(expected.switchName).mkpduPeriod();
  return {seconds == expected.seconds,
          fmt::format("{} has MKPDU period {}", expected.switchName, seconds)};
}

Finding Findings::of(HasMkpduThreshold const& expected) const {
  auto const threshold = statusOf(expected.switchName).mkpduThreshold();
  return {threshold == expected.threshold,
          fmt::format("{} has MKPDU threshold {}", expected.switchName, threshold)};
}

Finding Findings::of(HasWrittenNothing const& expected) const {
  SwitchRecord const& now = recordOf(expected.switchName);
  SwitchRecord const then = simulation_.markedRecord(expected.since, expected.switchName);
  uint64_t const writes = expected.configuration
                              ? now.configurationWrites - then.configurationWrites
                              : now.writes - then.writes;
  return {writes == 0,
          fmt::format("{} has written {} attribute{}{}", expected.switchName, writes,
                      plural(writes), expected.configuration ? " of its configuration" : "")};
}

Finding Findings::of(HasReloadDiagnostics const& expected) const {
  auto const& diagnostics = recordOf(expected.switchName).reloadDiagnostics;
  if (!diagnostics) return {false, expected.switchName + " has reloaded nothing"};
  return {diagnostics->size() == expected.count,
          fmt::format("{} has {} mistake{} in its reload{}{}", expected.switchName,
                      diagnostics->size(), plural(diagnostics->size()),
                      diagnostics->empty() ? "" : ": ", inOneLine(*diagnostics))};
}

Finding Findings::of(HasReloadDiagnostic const& expected) const {
  auto const& diagnostics = recordOf(expected.switchName).reloadDiagnostics;
  if (!diagnostics) return {false, expected.switchName + " has reloaded nothing"};
  bool const has =
      std::any_of(diagnostics->begin(), diagnostics->end(), [&](auto const& diagnostic) {
        return diagnostic.line == expected.line && diagnostic.column == expected.column &&
               diagnostic.text().find(expected.says) != std::string::npos;
      });
  return {has, diagnostics->empty() ? expected.switchName + " has no mistake in its reload"
                                    : "its reload says " + inOneLine(*diagnostics)};
}

}  // namespace Lab
