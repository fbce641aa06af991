#include "host/port/PortSummary.h"

#include <algorithm>

#include "host/text/PortText.h"
#include "runtime/World.h"

namespace Macsecd {

using Macsec::MkaActorStatus;
using Macsec::MkaPeer;
using Macsec::Sci;

namespace {

PeerSummary summaryOf(MkaPeer const& peer, bool isLive) {
  auto const& info = peer.baseInfo();
  return {peer.msgId().charPtr(),   sciText(info.sci()), isLive,
          info.keyServerPriority(), info.msgNum(),       Vesk::now() - peer.timeStamp()};
}

KeySummary summaryOf(MkaActorStatus const& actor, Macsec::IntfStatus const* intfStatus) {
  KeySummary key;
  key.name = actor.ckn().charPtr();
  key.role = roleOf(actor, intfStatus);
  key.isPrincipal = actor.principal();
  key.agrees = actor.success();
  key.isKeyServer = actor.electedSelf();
  if (actor.keyServer() != Sci()) key.keyServer = sciText(actor.keyServer());
  for (MkaPeer const& peer : actor.livePeer()) key.peers.push_back(summaryOf(peer, true));
  for (MkaPeer const& peer : actor.potentialPeer()) key.peers.push_back(summaryOf(peer, false));
  std::ranges::sort(key.peers, {}, &PeerSummary::memberId);
  return key;
}

void addPort(Host const& host, Lumo::IntfId intfId, PortSummary& out) {
  auto const port = host.status()->portStatus(intfId);
  if (!port) return;
  out.sci = sciText(port->mySci());
  auto const intfStatus = host.status()->intfStatus(intfId);
  for (MkaActorStatus const& actor : port->actorStatus()) {
    out.keys.push_back(summaryOf(actor, intfStatus.ptr()));
  }
  std::ranges::sort(out.keys, [](KeySummary const& a, KeySummary const& b) {
    return std::tuple(!a.isPrincipal, a.name) < std::tuple(!b.isPrincipal, b.name);
  });
}

void addControlledPort(Host const& host, Lumo::IntfId intfId, PortSummary& out) {
  auto const cp = host.status()->cpStatus(intfId);
  out.state = stateOf(host.passage(intfId));
  if (!cp) return;
  out.cipherSuite = Macsec::suiteName(cp->cipher());
  out.ssci = cp->mySsci().ssci().charPtr();
  if (isNone(cp->txSak())) return;
  out.sak = sakText(cp->txSak());
  out.an = cp->txSak().an().value();
}

}  // namespace

KeySummary const* PortSummary::principal() const {
  auto const found = std::ranges::find(keys, true, &KeySummary::isPrincipal);
  return found == keys.end() ? nullptr : &*found;
}

std::string roleOf(MkaActorStatus const& actor, Macsec::IntfStatus const* intfStatus) {
  if (!intfStatus) return "former";
  if (actor.ckn() == intfStatus->key().ckn()) return "primary";
  return actor.ckn() == intfStatus->defaultKey().ckn() ? "fallback" : "former";
}

std::vector<Lumo::IntfId> interfacesOf(Host const& host) {
  std::vector<Lumo::IntfId> found;
  for (Macsec::IntfConfig const& intf : host.config()->intfConfig()) found.push_back(intf.intfId());
  std::ranges::sort(found, {}, [](Lumo::IntfId id) { return id.stringValue().view(); });
  return found;
}

char const* linkOf(Host const& host, Lumo::IntfId intfId) {
  auto const intf = host.ethIntfStatusDir()->intfStatus(intfId);
  if (!intf) return "absent";
  return intf->linkStatus() == Interface::linkUp ? "up" : "down";
}

PortSummary summaryOf(Host const& host, Lumo::IntfId intfId) {
  Vesk::WorldScope const scope(host.world());
  PortSummary out;
  out.interface = intfId.stringValue().charPtr();
  auto const intfConfig = host.config()->intfConfig(intfId);
  if (intfConfig) out.profile = intfConfig->profileName().charPtr();
  out.link = linkOf(host, intfId);
  addControlledPort(host, intfId, out);
  addPort(host, intfId, out);
  out.keyAge = host.keyAge(intfId);
  out.hardware = host.hardwareReport(intfId);
  return out;
}

}  // namespace Macsecd
