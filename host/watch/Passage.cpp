#include "host/watch/Passage.h"

#include "model/MacSecStatus.h"

namespace Macsecd {

namespace {

using Input = Interface::IntfForwardingModelInputDir;

bool isUnauthorized(Input const& input, Lumo::IntfId intfId) {
  auto const* const model = input.forwardingModelInput(intfId);
  return model && *model == Interface::intfForwardingModelUnauthorized();
}

// What the hardware has installed, also while the state machines don't run.
Vesk::Ptr<Macsec::MacSecIntfStatus> installedOn(Vesk::Dir const& slices, Lumo::IntfId intfId) {
  for (auto const& entry : slices.entityPtr()) {
    auto const slice = Vesk::ptrCast<Macsec::MacSecStatus>(entry.value());
    if (auto found = slice->status(intfId)) return found;
  }
  return nullptr;
}

Passage throughAssociations(Vesk::Dir const& slices, HardwareReport const& report,
                            Lumo::IntfId intfId) {
  auto const installed = installedOn(slices, intfId);
  bool const sends = report.sends.value_or(installed && installed->txSaStatus());
  bool const receives = report.receives.value_or(installed && !installed->rxSaStatus().empty());
  if (!sends) return Passage::noTransmitSa;
  return receives ? Passage::open : Passage::noReceiveSa;
}

Passage throughHardware(Vesk::Dir const& slices, HardwareReport const& report,
                        Lumo::IntfId intfId) {
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
  return throughAssociations(slices, report, intfId);
}

}  // namespace

Passage passageOf(PassageInputs const& inputs, HardwareReport const& report, Lumo::IntfId intfId) {
  auto const cp = inputs.status.cpStatus(intfId);
  if (!cp) return Passage::noPort;
  if (!cp->controlledPortEnabled()) return Passage::notAgreed;
  if (isUnauthorized(inputs.transmitHold, intfId)) return Passage::transmitHeld;
  if (isUnauthorized(inputs.peerLoss, intfId)) return Passage::peersLost;
  if (isUnauthorized(inputs.forwarding, intfId)) return Passage::unauthorized;
  return throughHardware(inputs.slices, report, intfId);
}

char const* stateOf(Passage passage) {
  if (passage == Passage::noPort) return "absent";
  return passage == Passage::open ? "open" : "closed";
}

}  // namespace Macsecd
