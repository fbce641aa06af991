#include "host/port/PortWatch.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "host/text/PortText.h"
#include "runtime/Text.h"

namespace Macsecd {

namespace {

using Vesk::AttributeWrite;

/// What a summary of a port consists of, as far as it doesn't change with each frame.
constexpr std::string_view kTold[] = {
    "actorStatus", "controlledPortEnabled",
    "cpStatus",    "defaultKey",
    "electedSelf", "key",
    "keyServer",   "livePeer",
    "portStatus",  "principal",
    "rxSaStatus",  "txSak",
    "txSaStatus",
};

Lumo::IntfId memberOf(AttributeWrite const& write) {
  bool const isQuoted = write.key.starts_with('\'');
  return Lumo::IntfId(Vesk::String8(isQuoted ? Vesk::TextParser(write.key).quoted() : write.key));
}

Lumo::IntfId portOf(Vesk::Entity const* entity) {
  auto const* const port = dynamic_cast<Macsec::MkaPortStatus const*>(entity);
  return port ? port->intfId() : Lumo::IntfId();
}

/// Empty for what doesn't belong to the status of one interface.
Lumo::IntfId interfaceOf(AttributeWrite const& write) {
  Vesk::Entity const* const entity = &write.entity;
  if (auto* actor = dynamic_cast<Macsec::MkaActorStatus const*>(entity))
    return portOf(actor->parent());
  if (auto* cp = dynamic_cast<Macsec::CpStatus const*>(entity)) return cp->intfId();
  if (auto* intf = dynamic_cast<Macsec::IntfStatus const*>(entity)) return intf->intfId();
  if (auto* sas = dynamic_cast<Macsec::MacSecIntfStatus const*>(entity)) return sas->intfId();
  if (dynamic_cast<Macsec::Status const*>(entity)) return memberOf(write);
  return portOf(entity);
}

bool hasUnknownPeer(PortSummary const& port) {
  std::string const unknown = sciText(Macsec::Sci());
  return std::ranges::any_of(port.keys, [&](KeySummary const& key) {
    return std::ranges::find(key.peers, unknown, &PeerSummary::sci) != key.peers.end();
  });
}

}  // namespace

PortWatch::PortWatch(Host& host, Tell tell)
    : world_(Vesk::world()),
      host_(host),
      tell_(std::move(tell)),
      formerLog_(std::exchange(Vesk::attributeLogEnabled, true)) {
  for (Lumo::IntfId const intfId : interfacesOf(host)) told_[intfId] = now(intfId);
  world_.attributeFollowerIs(*this);
  host_.tapIs(*this);
}

PortWatch::~PortWatch() {
  host_.tapDel(*this);
  world_.attributeFollowerDel(*this);
  Vesk::attributeLogEnabled = formerLog_;
}

PortWatch::Told PortWatch::now(Lumo::IntfId intfId) const {
  PortSummary port = summaryOf(host_, intfId);
  bool const waits = hasUnknownPeer(port);
  return {std::move(port), linkOf(host_, intfId), waits};
}

void PortWatch::attributeWritten(AttributeWrite const& write) {
  std::string_view const attribute = write.attribute;
  if (attribute == "baseInfo") {
    peerWritten(write.entity.parent());
  } else if (attribute == "linkStatus") {
    auto* intf = dynamic_cast<Interface::EthIntfStatus const*>(&write.entity);
    if (intf) lookAtLink(intf->intfId());
  } else if (attribute == "intfStatus") {
    bool const isLink = &write.entity == host_.ethIntfStatusDir().ptr();
    isLink ? lookAtLink(memberOf(write)) : look(memberOf(write));
  } else if (attribute == "forwardingModelInput") {
    look(memberOf(write));
  } else if (std::ranges::find(kTold, attribute) != std::end(kTold)) {
    Lumo::IntfId const intfId = interfaceOf(write);
    if (!intfId.empty()) look(intfId);
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
  tell_({PortEventKind::link, intfId.stringValue().charPtr(), Vesk::now(), link});
}

void PortWatch::hardwareFaultChanged(Lumo::IntfId intfId, std::string const& fault) {
  tell_({PortEventKind::hardwareFault, intfId.stringValue().charPtr(), Vesk::now(), fault});
}

}  // namespace Macsecd
