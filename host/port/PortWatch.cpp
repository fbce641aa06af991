#include "host/port/PortWatch.h"

#include <algorithm>
#include <utility>

#include "host/text/PortText.h"
#include "runtime/Text.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

using Interface::EthIntfStatus;
using Interface::EthIntfStatusDir;
using ForwardingInput = Interface::IntfForwardingModelInputDir;
using Macsec::CpStatus;
using Macsec::IntfStatus;
using Macsec::MacSecIntfStatus;
using Macsec::MkaPeer;
using Macsec::MkaPortStatus;
using Macsec::Status;
using Vesk::AttributeWrite;

Lumo::IntfId memberOf(AttributeWrite const& write) {
  return Lumo::IntfId(Vesk::String8(Vesk::plainText(write.key)));
}

/// Empty for what isn't the status of a port.
Lumo::IntfId portOf(Vesk::Entity const* entity) {
  auto const* const port = dynamic_cast<MkaPortStatus const*>(entity);
  return port ? port->intfId() : Lumo::IntfId();
}

/// The interface whose summary the write can change, as far as that doesn't change with each frame;
/// empty for none.
Lumo::IntfId interfaceOf(AttributeWrite const& write) {
  using Actor = Macsec::MkaActorStatus;
  if (auto* actor = write.of<Actor>(
          {Actor::kPrincipal, Actor::kElectedSelf, Actor::kKeyServer, Actor::kLivePeer})) {
    return portOf(actor->parent());
  }
  if (auto* cp = write.of<CpStatus>({CpStatus::kControlledPortEnabled, CpStatus::kTxSak})) {
    return cp->intfId();
  }
  if (auto* intf = write.of<IntfStatus>({IntfStatus::kKey, IntfStatus::kDefaultKey})) {
    return intf->intfId();
  }
  if (auto* port = write.of<MkaPortStatus>({MkaPortStatus::kActorStatus})) return port->intfId();
  if (auto* sas = write.of<MacSecIntfStatus>(
          {MacSecIntfStatus::kTxSaStatus, MacSecIntfStatus::kRxSaStatus})) {
    return sas->intfId();
  }
  bool const isOfPort =
      write.of<Status>({Status::kIntfStatus, Status::kCpStatus, Status::kPortStatus}) ||
      write.of<ForwardingInput>({ForwardingInput::kForwardingModelInput});
  return isOfPort ? memberOf(write) : Lumo::IntfId();
}

bool hasUnknownPeer(PortSummary const& port) {
  std::string const unknown = sciText(Macsec::Sci());
  return std::ranges::any_of(port.keys, [&](KeySummary const& key) {
    return std::ranges::find(key.peers, unknown, &PeerSummary::sci) != key.peers.end();
  });
}

}  // namespace

PortWatch::PortWatch(Host& host, Tell tell) : host_(host), tell_(std::move(tell)) {
  Vesk::WorldScope const scope(host_.world());
  for (Lumo::IntfId const intfId : interfacesOf(host)) told_[intfId] = now(intfId);
  host_.world().attributeFollowerIs(*this);
  host_.tapIs(*this);
}

PortWatch::~PortWatch() {
  host_.tapDel(*this);
  host_.world().attributeFollowerDel(*this);
}

PortWatch::Told PortWatch::now(Lumo::IntfId intfId) const {
  PortSummary port = summaryOf(host_, intfId);
  bool const waits = hasUnknownPeer(port);
  return {std::move(port), linkOf(host_, intfId), waits};
}

void PortWatch::attributeWritten(AttributeWrite const& write) {
  if (auto* peer = write.of<MkaPeer>({MkaPeer::kBaseInfo})) {
    peerWritten(peer->parent());
  } else if (auto* link = write.of<EthIntfStatus>({EthIntfStatus::kLinkStatus})) {
    lookAtLink(link->intfId());
  } else if (write.of<EthIntfStatusDir>({EthIntfStatusDir::kIntfStatus})) {
    lookAtLink(memberOf(write));
  } else if (auto const intfId = interfaceOf(write); !intfId.empty()) {
    look(intfId);
  }
}

// A peer is listed first, and who it is stands there afterwards.
void PortWatch::peerWritten(Vesk::Entity const* actor) {
  if (!actor) return;
  Lumo::IntfId const intfId = portOf(actor->parent());
  auto const found = told_.find(intfId);
  if (found != told_.end() && found->second.waitsForPeer) look(intfId);
}

void PortWatch::look(Lumo::IntfId intfId) {
  Told& told = told_[intfId];
  if (told.port.state.empty()) told.port.state = "absent";
  PortSummary after = summaryOf(host_, intfId);
  auto const events = eventsBetween(told.port, after);
  told.waitsForPeer = hasUnknownPeer(after);
  told.port = std::move(after);
  for (PortEvent const& event : events) tell_(event);
}

void PortWatch::lookAtLink(Lumo::IntfId intfId) {
  Told& told = told_[intfId];
  std::string const link = linkOf(host_, intfId);
  if (std::exchange(told.link, link) == link) return;
  tell_({EventKind::link, intfId.stringValue().charPtr(), Vesk::now(), link});
}

void PortWatch::hardwareFaultChanged(Lumo::IntfId intfId, std::string const& fault) {
  tell_({EventKind::hardwareFault, intfId.stringValue().charPtr(), Vesk::now(), fault});
}

}  // namespace Macsecd
