#include "lab/report/Timeline.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

namespace Lab {

Timeline::Timeline(std::ostream& out, Scenario const& scenario) : out_(out), width_(2) {
  for (SwitchSpec const& spec : scenario.switches) width_ = std::max(width_, spec.name.size());
}

void Timeline::line(double time, std::string const& who, std::string const& text) {
  out_ << fmt::format("{:>10}  {:<{}}  {}\n", timeText(time), who, width_, text);
}

void Timeline::acted(double time, std::string const& text) { line(time, "--", text); }

void Timeline::happened(Event const& event) {
  if (auto const* syslog = std::get_if<SyslogLine>(&event.what)) {
    line(event.time, event.switchName, syslog->name + ": " + syslog->text);
  } else if (auto const* port = eventOf(event, EventKind::state)) {
    line(event.time, event.switchName, "port " + port->interface + " is " + port->value);
  } else if (auto const* ended = std::get_if<ProcessEnded>(&event.what)) {
    line(event.time, event.switchName,
         fmt::format("process ends with status {}, the next starts at {}", ended->status,
                     timeText(ended->startsAgain)));
  } else if (auto const* reloaded = std::get_if<Reloaded>(&event.what)) {
    line(event.time, event.switchName,
         fmt::format("{} is {}taken over", reloaded->file, reloaded->taken ? "" : "not "));
    for (auto const& diagnostic : reloaded->diagnostics) {
      line(event.time, event.switchName, diagnostic.text());
    }
  }
}

}  // namespace Lab
