#include "lab/exhaust/SmallFaults.h"

#include <fmt/format.h>

namespace Lab {

namespace {

// In seconds: how much later a frame comes again, how long a process stays dead, and how late a
// timer is: longer than a frame is on its way.
constexpr double kReplayed = 3, kDead = 1, kLate = 0.002;

using Lines = std::vector<std::string>;

std::string hitting(char const* what, Simulation::Recorded const& frame) {
  return fmt::format("at {:.6f} {} 1 frame from {}", frame.time, what, frame.from.text());
}

// To each end but the one that it came from.
void addReplays(Lines& lines, Simulation const& played, size_t wire, size_t number) {
  auto const& frame = played.recorded(wire)[number - 1];
  if (frame.time + kReplayed > played.scenario().runUntil) return;
  for (PortName const& to : played.scenario().wires[wire].ends) {
    if (to == frame.from) continue;
    lines.push_back(
        fmt::format("at {:.6f} replay frame {} to {}", frame.time + kReplayed, number, to.text()));
  }
}

Lines lateTimers(Simulation const& played) {
  Lines lines;
  for (auto const& one : played.switches()) {
    for (double const time : one->timerTimes()) {
      lines.push_back(fmt::format("at {:.6f} stop {} for {}", time, one->name(), kLate));
    }
  }
  return lines;
}

Lines deaths(Simulation const& played) {
  Lines lines;
  for (auto const& one : played.switches()) {
    for (size_t commit = 1; commit <= one->store().commits(); ++commit) {
      for (char const* const moment : {"at", "before"}) {
        lines.push_back(
            fmt::format("at 0 kill {} {} commit {} after {}", one->name(), moment, commit, kDead));
      }
    }
  }
  return lines;
}

}  // namespace

char const* wordOf(SmallFault fault) {
  switch (fault) {
    case SmallFault::loss:
      return "loss";
    case SmallFault::duplicate:
      return "duplicate";
    case SmallFault::delay:
      return "delay";
    case SmallFault::replay:
      return "replay";
    case SmallFault::late:
      return "late";
    case SmallFault::death:
      return "death";
  }
  return "";
}

std::vector<std::string> allOf(SmallFault fault, Simulation const& played) {
  if (fault == SmallFault::death) return deaths(played);
  if (fault == SmallFault::late) return lateTimers(played);
  Lines lines;
  for (size_t wire = 0; wire < played.scenario().wires.size(); ++wire) {
    auto const& frames = played.recorded(wire);
    for (size_t number = 1; number <= frames.size(); ++number) {
      auto const& frame = frames[number - 1];
      if (fault == SmallFault::loss) lines.push_back(hitting("lose", frame));
      if (fault == SmallFault::duplicate) lines.push_back(hitting("duplicate", frame));
      if (fault == SmallFault::delay) lines.push_back(hitting("reorder", frame));
      if (fault == SmallFault::replay) addReplays(lines, played, wire, number);
    }
  }
  return lines;
}

}  // namespace Lab
