#include "host/port/PortHistory.h"

#include <utility>

namespace Macsecd {

PortHistory::PortHistory(Host& host)
    : watch_(host, [this](PortEvent const& event) { happened(event); }) {
  for (Lumo::IntfId const intfId : interfacesOf(host)) {
    PortSummary const port = summaryOf(host, intfId);
    ports_[port.interface].hasSak = !port.sak.empty();
  }
}

PortHistory::Port const& PortHistory::port(std::string const& interface) const {
  static Port const none;
  auto const found = ports_.find(interface);
  return found == ports_.end() ? none : found->second.port;
}

void PortHistory::happened(PortEvent const& event) {
  Now& now = ports_[event.interface];
  if (event.kind == EventKind::link && event.value == "up") now.waitsSince = event.time;
  if (event.kind == EventKind::sak) {
    bool const hadSak = std::exchange(now.hasSak, !event.sak.empty());
    now.port.rekeys += hadSak && now.hasSak;
  }
  if (event.kind != EventKind::state) return;
  if (event.value != "open") {
    if (!now.waitsSince || event.value == "closed") now.waitsSince = event.time;
    return;
  }
  ++now.port.openings;
  if (now.waitsSince) now.port.timeToSecure = event.time - *now.waitsSince;
  now.waitsSince.reset();
}

}  // namespace Macsecd
