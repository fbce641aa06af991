#include "lab/judge/Expectations.h"

#include <fmt/format.h>

namespace Lab {

namespace {

bool isBefore(double a, double b) { return !notAfter(b, a); }

bool matches(Logs const& expected, SyslogLine const& line) {
  if (line.name != expected.name || line.arguments.size() < expected.arguments.size()) return false;
  for (size_t i = 0; i < expected.arguments.size(); ++i) {
    if (expected.arguments[i] && *expected.arguments[i] != line.arguments[i]) return false;
  }
  return true;
}

std::string lineCount(uint32_t lines) {
  return lines == 0 ? "no such line came"
                    : fmt::format("{} such line{} came", lines, lines == 1 ? "" : "s");
}

}  // namespace

std::string Failure::text() const {
  return fmt::format("{}:{}: at {} on {}: expected that {}, but {}", file, line, timeText(time),
                     switchName, expected, is);
}

Expectations::Expectations(Simulation const& simulation)
    : simulation_(simulation), findings_(simulation) {
  for (Expectation const& expectation : simulation.scenario().expectations) {
    checks_.push_back({&expectation, false, 0, std::nullopt, std::nullopt});
  }
}

void Expectations::happened(Event const& event) {
  for (Check& check : checks_) {
    Expectation const& expectation = *check.expectation;
    if (check.decided || switchNameOf(expectation) != event.switchName) continue;
    if (auto const* line = std::get_if<SyslogLine>(&event.what)) {
      if (auto const* logs = std::get_if<Logs>(&expectation.what)) {
        hear(check, *logs, *line, event.time);
      }
    } else if (auto const* port = eventOf(event, EventKind::state)) {
      if (auto const* portIs = std::get_if<PortIs>(&expectation.what)) {
        see(check, *portIs, *port, event.time);
      }
    }
  }
}

// A port that is to stay as it is may not leave its state within an instant either.
void Expectations::see(Check& check, PortIs const& expected, PortEvent const& port, double time) {
  When const& when = check.expectation->when;
  if (when.span != Span::throughout || !isBefore(when.from, time) ||
      expected.port.interface != port.interface) {
    return;
  }
  judge(check, time, Findings::of(expected, port.value));
}

void Expectations::hear(Check& check, Logs const& expected, SyslogLine const& line, double time) {
  When const& when = check.expectation->when;
  if (!matches(expected, line) || !notAfter(time, when.to)) return;
  if (!check.firstLine) check.firstLine = time;
  if (!notAfter(when.from, time)) return;
  ++check.lines;
  if (expected.max && check.lines > *expected.max) {
    fail(check, time, lineCount(check.lines) + ": \"" + line.text + "\"");
  }
}

void Expectations::instantDone(double time) {
  for (Check& check : checks_) {
    if (!check.decided) look(check, time);
  }
}

void Expectations::look(Check& check, double time) {
  Expectation const& expectation = *check.expectation;
  if (auto const* logs = std::get_if<Logs>(&expectation.what)) {
    return lookAtLines(check, *logs, time);
  }
  Span const span = expectation.when.span;
  if (isBefore(time, expectation.when.from) && span != Span::exactly) return;
  judge(check, time, find(expectation));
}

void Expectations::lookAtLines(Check& check, Logs const& expected, double time) {
  When const& when = check.expectation->when;
  if (isBefore(time, when.to)) return;
  check.decided = true;
  if (when.span == Span::exactly &&
      !(check.firstLine && sameInstant(*check.firstLine, when.from))) {
    return fail(
        check, time,
        check.firstLine ? "the first one came at " + timeText(*check.firstLine) : lineCount(0));
  }
  if (check.lines < expected.min) fail(check, time, lineCount(check.lines));
}

void Expectations::judge(Check& check, double time, Finding const& finding) {
  When const& when = check.expectation->when;
  bool const last = !isBefore(time, when.to);
  switch (when.span) {
    case Span::at:
    case Span::by:
    case Span::between:
      check.decided = finding.holds || last;
      if (!finding.holds && last) fail(check, time, finding.is);
      return;
    case Span::throughout:
      check.decided = last;
      if (!finding.holds) fail(check, time, finding.is);
      return;
    case Span::exactly:
      check.decided = last || finding.holds;
      if (last ? !finding.holds : finding.holds) {
        fail(check, time, finding.is + (last ? "" : " already"));
      }
      return;
  }
}

void Expectations::fail(Check& check, double time, std::string is) {
  Expectation const& expectation = *check.expectation;
  check.decided = true;
  check.failure =
      Failure{simulation_.scenario().file,   expectation.line, time, switchNameOf(expectation),
              withoutTime(expectation.text), std::move(is)};
}

Finding Expectations::find(Expectation const& expectation) const {
  return std::visit(
      [this](auto const& what) {
        if constexpr (std::is_same_v<std::decay_t<decltype(what)>, Logs>) {
          return Finding{true, ""};
        } else {
          return findings_.of(what);
        }
      },
      expectation.what);
}

std::vector<Failure> Expectations::failures() const {
  std::vector<Failure> failures;
  for (Check const& check : checks_) {
    if (check.failure) {
      failures.push_back(*check.failure);
    } else if (!check.decided) {
      failures.push_back({simulation_.scenario().file, check.expectation->line, simulation_.now(),
                          switchNameOf(*check.expectation), withoutTime(check.expectation->text),
                          "the scenario ended before"});
    }
  }
  return failures;
}

}  // namespace Lab
