#include "lab/world/TreeWatch.h"

#include <algorithm>

#include "host/port/PortSummary.h"
#include "lab/world/PortView.h"
#include "runtime/World.h"

namespace Lab {

namespace {

using ForwardingInput = Interface::IntfForwardingModelInputDir;
using Macsec::CpStatus;
using Macsec::IntfStatus;
using Macsec::MacSecIntfStatus;
using Macsec::MkaActorStatus;
using Macsec::MkaPortStatus;
using Macsec::SaStatus;
using Macsec::Status;

using Place = std::pair<bool, uint8_t>;  // transmit, association number

std::string textOf(Lumo::IntfId intfId) { return intfId.stringValue().charPtr(); }

KeyName keyName(Vesk::String8 const& id, uint32_t number) { return {id.charPtr(), number}; }

template <class Map>
std::vector<std::string> names(Map const& peers) {
  std::vector<std::string> ids;
  for (auto& peer : peers) ids.emplace_back(peer.msgId().charPtr());
  std::sort(ids.begin(), ids.end());
  return ids;
}

// Which actor is principal, and what its key is to the interface.
bool concernsKeyInUse(Vesk::AttributeWrite const& write) {
  return write.of<MkaActorStatus>({MkaActorStatus::kPrincipal}) ||
         write.of<MkaPortStatus>({MkaPortStatus::kActorStatus}) ||
         write.of<Status>({Status::kIntfStatus, Status::kPortStatus}) ||
         write.of<IntfStatus>({IntfStatus::kKey, IntfStatus::kDefaultKey});
}

// What `Macsecd::passageOf` looks at.
bool concernsPassage(Vesk::AttributeWrite const& write) {
  return write.of<Status>({Status::kCpStatus}) ||
         write.of<CpStatus>({CpStatus::kControlledPortEnabled}) ||
         write.of<ForwardingInput>({ForwardingInput::kForwardingModelInput}) ||
         write.of<MacSecIntfStatus>({MacSecIntfStatus::kTxSaStatus, MacSecIntfStatus::kRxSaStatus});
}

// Tells what differs between two tables of places: first what went, then what came or changed.
template <class Table, class Gone, class Stands>
void tellDifference(Table const& before, Table const& after, Gone gone, Stands stands) {
  for (auto const& [place, value] : before) {
    if (!after.count(place)) gone(place);
  }
  for (auto const& [place, value] : after) {
    auto const old = before.find(place);
    if (old == before.end() || old->second != value) stands(place, value);
  }
}

}  // namespace

void TreeWatch::written(Vesk::AttributeWrite const& write) {
  if (auto* actor =
          write.of<MkaActorStatus>({MkaActorStatus::kKeyServer, MkaActorStatus::kElectedSelf,
                                    MkaActorStatus::kLivePeer, MkaActorStatus::kPotentialPeer})) {
    lookAtActor(*actor);
  }
  // One that is made anew begins without the peers of the former one.
  if (write.member && write.of<MkaPortStatus>({MkaPortStatus::kActorStatus})) {
    lookAtActor(static_cast<MkaActorStatus const&>(*write.member));
  }
  if (write.of<ForwardingInput>({ForwardingInput::kForwardingModelInput})) lookAtForwarding();
  if (write.of<MacSecIntfStatus>({MacSecIntfStatus::kTxSaStatus, MacSecIntfStatus::kRxSaStatus}) ||
      write.of<SaStatus>({SaStatus::kLpn})) {
    for (Lumo::IntfId const intfId : interfaces_) lookAtInstalled(intfId);
  }
  if (concernsPassage(write)) lookAtPorts();
  if (concernsKeyInUse(write)) lookAtKeysInUse();
  if (auto* cp = write.of<CpStatus>({CpStatus::kRxSak, CpStatus::kTxSak})) {
    lookAtAsked(cp->intfId());
  }
  if (write.of<Status>({Status::kCpStatus})) {
    for (Lumo::IntfId const intfId : interfaces_) lookAtAsked(intfId);
  }
}

void TreeWatch::lookAtPorts() {
  for (Lumo::IntfId const intfId : interfaces_) {
    std::string const state = stateOf(host_, intfId);
    if (std::exchange(told_[intfId].state, state) == state) continue;
    tell_(PortEvent{EventKind::state, textOf(intfId), Vesk::now(), state});
  }
}

void TreeWatch::lookAtAsked(Lumo::IntfId intfId) {
  std::map<Place, KeyName> asked;
  if (auto const cpStatus = host_.status()->cpStatus(intfId)) {
    for (auto& entry : cpStatus->rxSak()) {
      Macsec::Sak const& sak = entry.value();
      asked[{false, sak.an().value()}] = keyName(sak.keyMsgId(), sak.keyNum());
    }
    Macsec::Sak const& sak = cpStatus->txSak();
    if (sak != Macsec::Sak()) {
      asked[{true, sak.an().value()}] = keyName(sak.keyMsgId(), sak.keyNum());
    }
  }
  std::map<Place, KeyName> const before = std::exchange(told_[intfId].asked, asked);
  bool const transmits =
      std::any_of(asked.begin(), asked.end(), [](auto const& entry) { return entry.first.first; });
  tellDifference(
      before, asked,
      [&](Place place) {
        // Another association number for transmit takes over and withdraws nothing.
        if (place.first && transmits) return;
        tell_(SaAsked{textOf(intfId), place.first, place.second, std::nullopt});
      },
      [&](Place place, KeyName const& key) {
        tell_(SaAsked{textOf(intfId), place.first, place.second, key});
      });
}

void TreeWatch::lookAtInstalled(Lumo::IntfId intfId) {
  decltype(Told::installed) installed;
  auto const put = [&](bool transmit, Macsec::SaStatus const& sa) {
    installed[{transmit, sa.associationNumber().value()}] = {keyName(sa.keyId(), sa.keyNum()),
                                                             sa.lpn()};
  };
  if (auto const entry = slice_->status(intfId)) {
    for (Macsec::SaStatus& sa : entry->rxSaStatus()) put(false, sa);
    if (auto const& sa = entry->txSaStatus()) put(true, *sa);
  }
  auto const before = std::exchange(told_[intfId].installed, installed);
  tellDifference(
      before, installed,
      [&](Place place) {
        tell_(SaInstalled{textOf(intfId), place.first, place.second, std::nullopt, 0});
      },
      [&](Place place, auto const& sa) {
        tell_(SaInstalled{textOf(intfId), place.first, place.second, sa.first, sa.second});
      });
}

void TreeWatch::lookAtForwarding() {
  for (Lumo::IntfId const intfId : interfaces_) {
    bool const unauthorized =
        host_.forwardingModelInputDir()->forwardingModelInput(intfId) != nullptr;
    if (told_[intfId].unauthorized == unauthorized) continue;
    told_[intfId].unauthorized = unauthorized;
    tell_(ForwardingChanged{textOf(intfId), unauthorized});
  }
}

void TreeWatch::lookAtKeysInUse() {
  for (Lumo::IntfId const intfId : interfaces_) {
    PortEvent event{EventKind::key, textOf(intfId), Vesk::now()};
    if (auto const actor = PortView(*host_.status(), intfId).principal()) {
      event.key = actor->ckn().charPtr();
      event.role = Macsecd::roleOf(*actor, host_.status()->intfStatus(intfId).ptr());
    }
    std::pair const now(event.key, event.role);
    if (std::exchange(told_[intfId].keyInUse, now) != now) tell_(event);
  }
}

void TreeWatch::lookAtActor(Macsec::MkaActorStatus const& actor) {
  auto const* const port = dynamic_cast<Macsec::MkaPortStatus const*>(actor.parent());
  if (!port || port->parent() != host_.status().ptr()) return;
  std::string const interface = textOf(port->intfId());
  std::string const ckn = actor.ckn().charPtr();
  ToldActor& told = toldActors_[{port->intfId(), ckn}];

  std::string sci;
  if (actor.keyServer() != Macsec::Sci()) sci = sciText(actor.keyServer());
  if (std::pair now(sci, actor.electedSelf()); told.keyServer != now) {
    told.keyServer = now;
    PortEvent event{EventKind::keyServer, interface, Vesk::now()};
    event.key = ckn;
    std::tie(event.sci, event.isKeyServer) = now;
    tell_(event);
  }
  if (std::pair now(names(actor.livePeer()), names(actor.potentialPeer())); told.peers != now) {
    told.peers = now;
    tell_(PeersChanged{interface, ckn, now.first, now.second});
  }
}

}  // namespace Lab
