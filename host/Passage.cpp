#include "host/Passage.h"

#include "host/Host.h"

namespace Macsecd {

namespace {

using Input = Interface::IntfForwardingModelInputDir;

bool isUnauthorized(Input const& input, Lumo::IntfId intfId) {
  auto const* const model = input.forwardingModelInput(intfId);
  return model && *model == Interface::intfForwardingModelUnauthorized();
}

// What the hardware has installed, also while the state machines don't run.
Vesk::Ptr<Macsec::MacSecIntfStatus> installedOn(Host const& host, Lumo::IntfId intfId) {
  for (auto const& entry : host.slices()->entityPtr()) {
    auto const slice = Vesk::ptrCast<Macsec::MacSecStatus>(entry.value());
    if (auto const found = slice->status(intfId)) return found;
  }
  return nullptr;
}

Passage throughAssociations(Host const& host, Lumo::IntfId intfId, HardwareReport const& report) {
  auto const installed = installedOn(host, intfId);
  bool const sends = report.sends.value_or(installed && installed->txSaStatus());
  bool const receives = report.receives.value_or(installed && !installed->rxSaStatus().empty());
  if (!sends) return Passage::noTransmitSa;
  return receives ? Passage::open : Passage::noReceiveSa;
}

Passage throughHardware(Host const& host, Lumo::IntfId intfId) {
  HardwareReport const report = host.hardwareReport(intfId);
  switch (report.deviceState) {
    case DeviceState::absent:
      return Passage::deviceAbsent;
    case DeviceState::down:
      return Passage::deviceDown;
    case DeviceState::dormant:
      return Passage::deviceDormant;
    case DeviceState::up:
      break;
  }
  return throughAssociations(host, intfId, report);
}

}  // namespace

Passage passageOf(Host const& host, Lumo::IntfId intfId) {
  auto const cp = host.status()->cpStatus(intfId);
  if (!cp) return Passage::noPort;
  if (!cp->controlledPortEnabled()) return Passage::notAgreed;
  if (isUnauthorized(*host.transmitHoldInputDir(), intfId)) return Passage::transmitHeld;
  if (isUnauthorized(*host.peerLossInputDir(), intfId)) return Passage::peersLost;
  if (isUnauthorized(*host.forwardingModelInputDir(), intfId)) return Passage::unauthorized;
  return throughHardware(host, intfId);
}

char const* stateOf(Passage passage) {
  if (passage == Passage::noPort) return "absent";
  return passage == Passage::open ? "open" : "closed";
}

}  // namespace Macsecd
