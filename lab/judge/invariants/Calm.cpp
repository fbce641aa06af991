#include "lab/judge/invariants/Calm.h"

#include <algorithm>

namespace Lab {

namespace {

using Names = std::vector<std::string>;

// At which switches the action does something.
template <class Change>
Names touchedBy(Change const& change) {
  if constexpr (requires { change.port; }) {
    return {change.port.switchName};
  } else if constexpr (requires { change.profile.switchName; }) {
    return {change.profile.switchName};
  } else {
    return {change.switchName};
  }
}
Names touchedBy(Mark const&) { return {}; }
Names touchedBy(CountersCleared const&) { return {}; }
Names touchedBy(SendFrame const&) { return {}; }
Names touchedBy(Replay const&) { return {}; }
Names touchedBy(Dot1xKeyChange const& change) {
  Names names;
  for (Dot1xEnd const& end : change.ends) names.push_back(end.port.switchName);
  return names;
}

bool isWell(LinkEnd const& end) {
  return end.owner.host().running() && !end.owner.isStandingStill() &&
         !end.owner.config().shutdown && end.profile() && end.owner.hardware().isWell() &&
         !end.owner.hardware().isDeviceDown(end.intfId);
}

}  // namespace

void Calm::acts(double time, Action const& action) {
  Names const touched =
      std::visit([](auto const& change) { return touchedBy(change); }, action.what);
  for (std::string const& name : touched) mark(disturbed_, name, time);
  if (auto const* made = std::get_if<SendFrame>(&action.what)) {
    mark(visited_, made->port.switchName, time);
  }
  if (auto const* replay = std::get_if<Replay>(&action.what)) {
    mark(visited_, replay->to.switchName, time);
  }
}

void Calm::happened(Event const& event) {
  auto const* const line = std::get_if<SyslogLine>(&event.what);
  bool const isTreated =
      line && (line->name == "MACSECD_PORT_BOUND_ANEW" || line->name == "MACSECD_GOES_OVER_LATE");
  if (isTreated || std::holds_alternative<ProcessEnded>(event.what)) {
    mark(disturbed_, event.switchName, event.time);
  }
}

void Calm::mark(Times& times, std::string const& switchName, double time) const {
  auto const& wires = simulation_.scenario().wires;
  for (size_t wire = 0; wire < wires.size(); ++wire) {
    auto const isThere = [&](PortName const& port) { return port.switchName == switchName; };
    if (std::ranges::any_of(wires[wire].ends, isThere)) times[wire] = time;
  }
}

void Calm::instantDone(double time) {
  for (size_t wire = 0; wire < disturbed_.size(); ++wire) {
    if (isDisturbed(wire)) disturbed_[wire] = time;
  }
}

bool Calm::isDisturbed(size_t wire) const {
  auto const link = linkOf(simulation_, wire);
  return !link || !simulation_.isSound(wire) || !isWell(link->a) || !isWell(link->b);
}

}  // namespace Lab
