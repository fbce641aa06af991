#include "host/journal/PortJournal.h"

#include <utility>

#include "host/explain/Explain.h"
#include "runtime/Log.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

using Vesk::LogSeverity;
using Vesk::NoActionRequired;

Vesk::LogHandle const MACSECD_PORT_OPEN(
    "MACSECD_PORT_OPEN", LogSeverity::notice, "Interface %s is open with SAK %s",
    "Traffic may pass on the interface, under protection and both ways.", NoActionRequired, 0.0,
    0.0);

Vesk::LogHandle const MACSECD_PORT_CLOSED(
    "MACSECD_PORT_CLOSED", LogSeverity::warning, "Interface %s is closed: %s: %s",
    "No traffic may pass on the interface any more. The first cause is named as 'macsecctl "
    "explain' names it.",
    "Run 'macsecctl explain': it tells all causes, and what to do.", 0.0, 0.0);

Vesk::LogHandle const MACSECD_PORT_UNSTEADY(
    "MACSECD_PORT_UNSTEADY", LogSeverity::warning,
    "Interface %s changes all the time; from now on its state is logged once a minute",
    "Link, device and state of the interface have been logged 12 times within a minute.",
    "Check the cable, the optics and the other end; 'macsecctl watch' shows every change.", 0.0,
    0.0);

Vesk::LogHandle const MACSECD_LINK_UP("MACSECD_LINK_UP", LogSeverity::notice,
                                      "Interface %s: the link is up", "The interface has a link.",
                                      NoActionRequired, 0.0, 0.0);

Vesk::LogHandle const MACSECD_LINK_DOWN("MACSECD_LINK_DOWN", LogSeverity::notice,
                                        "Interface %s: the link is down",
                                        "The interface has no link, or is set down.",
                                        "Run 'macsecctl explain' if it should have one.", 0.0, 0.0);

Vesk::LogHandle const MACSECD_INTERFACE_GONE("MACSECD_INTERFACE_GONE", LogSeverity::notice,
                                             "Interface %s has gone",
                                             "The machine has no interface of this name any more.",
                                             NoActionRequired, 0.0, 0.0);

Vesk::LogHandle const MACSECD_DEVICE_MADE("MACSECD_DEVICE_MADE", LogSeverity::notice,
                                          "Interface %s: the MACsec device %s is made",
                                          "Protected traffic of the interface goes through it.",
                                          NoActionRequired, 0.0, 0.0);

Vesk::LogHandle const MACSECD_DEVICE_MADE_ANEW(
    "MACSECD_DEVICE_MADE_ANEW", LogSeverity::notice,
    "Interface %s: the MACsec device %s is made anew",
    "The former one has gone. Addresses and routes have gone with it.",
    "Give it its addresses and routes again, unless a network manager does.", 0.0, 0.0);

Vesk::LogHandle const MACSECD_DEVICE_GONE("MACSECD_DEVICE_GONE", LogSeverity::notice,
                                          "Interface %s: the MACsec device %s has gone",
                                          "It was deleted, or its port has ended.",
                                          NoActionRequired, 0.0, 0.0);

}  // namespace

struct PortJournal::Timer final : Zorn::TimerReactor<PortJournal> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().handleTime(); }
};

PortJournal::PortJournal(Host& host)
    : host_(host),
      timer_(Vesk::make<Timer>(*this, host.timerWheel())),
      watch_(host, [this](PortEvent const& event) {
        lookSoon(Lumo::IntfId(Vesk::String8(event.interface)));
      }) {
  begin();
  host_.tapIs(*this);
}

PortJournal::~PortJournal() {
  host_.tapDel(*this);
  Vesk::retire(timer_);
}

void PortJournal::begin() {
  for (Lumo::IntfId const intfId : interfacesOf(host_)) {
    Told& told = told_[intfId];
    auto const cp = host_.status()->cpStatus(intfId);
    told.wasOpen = cp && cp->controlledPortEnabled();
    HardwareReport const report = host_.hardwareReport(intfId);
    if (report.devicesMade == 0) told.device = report.device;  // that of a former process
    lookSoon(intfId);
  }
}

void PortJournal::lookSoon(Lumo::IntfId intfId) {
  changed_.insert(intfId);
  timer_->timeMinIs(Vesk::now());
}

void PortJournal::handleTime() {
  for (Lumo::IntfId const intfId : std::exchange(changed_, {})) {
    if (look(intfId)) continue;
    changed_.insert(intfId);
    timer_->timeMinIs(told_[intfId].rate.nextTime());
  }
}

// The link first, whose loss takes the device and the port with it.
bool PortJournal::look(Lumo::IntfId intfId) {
  Told& told = told_[intfId];
  return tellLink(intfId, told) && tellDevice(intfId, told) && tellState(intfId, told);
}

bool PortJournal::mayTell(Lumo::IntfId intfId, Told& told) {
  if (told.rate.take(Vesk::now())) {
    told.isUnsteady = false;
    return true;
  }
  if (!std::exchange(told.isUnsteady, true)) Vesk::log(MACSECD_PORT_UNSTEADY, intfId);
  return false;
}

bool PortJournal::tellLink(Lumo::IntfId intfId, Told& told) {
  std::string const link = linkOf(host_, intfId);
  if (told.link == link) return true;
  if (!mayTell(intfId, told)) return false;
  told.link = link;
  if (link == "absent") {
    Vesk::log(MACSECD_INTERFACE_GONE, intfId);
  } else {
    Vesk::log(link == "up" ? MACSECD_LINK_UP : MACSECD_LINK_DOWN, intfId);
  }
  return true;
}

bool PortJournal::tellDevice(Lumo::IntfId intfId, Told& told) {
  HardwareReport const report = host_.hardwareReport(intfId);
  bool const isMade = report.devicesMade != told.devicesMade && !report.device.empty();
  if (!isMade && told.device == report.device) return true;
  if (!mayTell(intfId, told)) return false;
  if (report.device.empty()) {
    Vesk::log(MACSECD_DEVICE_GONE, intfId, told.device);
  } else if (isMade) {
    bool const isFirst = told.devicesMade == 0 && told.device.empty();
    Vesk::log(isFirst ? MACSECD_DEVICE_MADE : MACSECD_DEVICE_MADE_ANEW, intfId, report.device);
  }
  told.device = report.device;
  told.devicesMade = report.devicesMade;
  return true;
}

bool PortJournal::tellState(Lumo::IntfId intfId, Told& told) {
  bool const isOpen = host_.isOpen(intfId);
  bool const isNews = told.isOpen ? *told.isOpen != isOpen : isOpen || told.wasOpen;
  if (isNews && !mayTell(intfId, told)) return false;
  told.isOpen = isOpen;
  if (!isNews) return true;
  if (isOpen) {
    Vesk::log(MACSECD_PORT_OPEN, intfId, summaryOf(host_, intfId).sak);
    return true;
  }
  Explanation const explanation = explain(host_, intfId);
  Cause const& cause = explanation.causes.front();
  Vesk::log(MACSECD_PORT_CLOSED, intfId, Vesk::stringValue(cause.kind), cause.what);
  return true;
}

}  // namespace Macsecd
