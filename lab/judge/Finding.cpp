#include "lab/judge/Finding.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "lab/world/PortView.h"

namespace Lab {

using Macsec::MkaActorStatus;
using Macsec::Sak;

namespace {

Lumo::IntfId intfOf(PortName const& port) { return Lumo::IntfId(port.interface.c_str()); }

std::string noActor(PortName const& port, std::optional<std::string> const& ckn) {
  if (ckn) return fmt::format("{} has no actor of key {}", port.text(), *ckn);
  return port.text() + " has no principal actor";
}

std::string sakOrNone(Sak const& sak) { return isNone(sak) ? "no SAK" : "SAK " + sakText(sak); }

// Without a number, that of the newest key.
Macsec::AssociationNumber newestAn(Macsec::CpStatus const& cpStatus) {
  Macsec::Sak const& latest = cpStatus.latestSakContext().sak();
  return latest == Sak() ? cpStatus.oldSakContext().sak().an() : latest.an();
}

}  // namespace

Macsec::Status const& Findings::statusOf(std::string const& switchName) const {
  return *simulation_.switchOf(switchName).host().status();
}

Vesk::Ptr<MkaActorStatus> Findings::actorOf(PortName const& port,
                                            std::optional<std::string> const& ckn) const {
  return PortView(statusOf(port.switchName), intfOf(port)).actor(ckn);
}

Sak Findings::sakOf(PortName const& port) const {
  return PortView(statusOf(port.switchName), intfOf(port)).txSak();
}

// The name of the switch with that address, or the SCI when there is none.
std::string Findings::switchOf(Macsec::Sci const& sci) const {
  for (auto const& one : simulation_.switches()) {
    if (one->spec().mac == sci.addr()) return one->name();
  }
  return sciText(sci);
}

Finding Findings::of(PortIs const& expected) const {
  Switch const& owner = simulation_.switchOf(expected.port.switchName);
  return of(expected, stateOf(owner.host(), intfOf(expected.port)));
}

Finding Findings::of(PortIs const& expected, std::string const& state) {
  bool holds = false;
  switch (expected.state) {
    case PortState::open:
      holds = state == "open";
      break;
    case PortState::closed:
      holds = state == "closed";
      break;
    case PortState::absent:
      holds = state == "absent";
      break;
    case PortState::notOpen:
      holds = state != "open";
      break;
  }
  return {holds, fmt::format("{} is {}", expected.port.text(), state)};
}

Finding Findings::of(UsesKey const& expected) const {
  auto const actor = actorOf(expected.port, std::nullopt);
  if (!actor) return {!expected.ckn, expected.port.text() + " uses no key"};
  return {expected.ckn && actor->ckn() == expected.ckn->c_str(),
          fmt::format("{} uses key {}", expected.port.text(), actor->ckn().view())};
}

Finding Findings::of(UsesDerivedKey const& expected) const {
  auto const actor = actorOf(expected.port, std::nullopt);
  if (!actor) return {false, expected.port.text() + " uses no key"};
  auto const intfStatus = statusOf(expected.port.switchName).intfStatus(intfOf(expected.port));
  bool const derives = intfStatus &&
                       intfStatus->dot1xType() != Macsec::IntfStatus::dot1xTypeDefault &&
                       intfStatus->key().ckn() == actor->ckn();
  return {derives, fmt::format("{} uses the {} key {}", expected.port.text(),
                               derives ? "derived" : "configured", actor->ckn().view())};
}

Finding Findings::of(HasPrimaryKey const& expected) const {
  auto const intfStatus = statusOf(expected.port.switchName).intfStatus(intfOf(expected.port));
  bool const any = intfStatus && intfStatus->key() != Macsec::Cak();
  return {any == expected.any,
          fmt::format("{} has {} primary key", expected.port.text(), any ? "a" : "no")};
}

Finding Findings::of(HasKeyServer const& expected) const {
  std::string const port = expected.port.text();
  auto const actor = actorOf(expected.port, expected.under);
  if (!actor) return {!expected.switchName, noActor(expected.port, expected.under)};
  if (actor->electedSelf()) {
    return {expected.switchName == expected.port.switchName, port + " is key server"};
  }
  if (actor->keyServer() == Macsec::Sci())
    return {!expected.switchName, port + " has no key server"};
  std::string const server = switchOf(actor->keyServer());
  return {expected.switchName == server, fmt::format("{} has key server {}", port, server)};
}

Finding Findings::of(HasLivePeers const& expected) const {
  auto const actor = actorOf(expected.port, expected.under);
  if (!actor) return {expected.count == 0, noActor(expected.port, expected.under)};
  std::vector<std::string> peers;
  for (Macsec::MkaPeer& peer : actor->livePeer()) {
    peers.push_back(switchOf(peer.baseInfo().sci()));
  }
  std::sort(peers.begin(), peers.end());
  std::vector<std::string> wanted = expected.switches;
  std::sort(wanted.begin(), wanted.end());
  bool const holds = wanted.empty() ? peers.size() == expected.count : peers == wanted;
  return {holds, peers.empty() ? expected.port.text() + " has no live peer"
                               : fmt::format("{} has live peers {}", expected.port.text(),
                                             fmt::join(peers, ", "))};
}

Finding Findings::of(HasForwardingEntry const& expected) const {
  auto const& input =
      *simulation_.switchOf(expected.port.switchName).host().forwardingModelInputDir();
  bool const unauthorized = input.forwardingModelInput(intfOf(expected.port)) != nullptr;
  return {unauthorized == expected.unauthorized,
          fmt::format("{} has {}", expected.port.text(),
                      unauthorized ? "forwarding entry unauthorized" : "no forwarding entry")};
}

Finding Findings::of(HasSakTransmit const& expected) const {
  auto const actor = actorOf(expected.port, std::nullopt);
  bool const set = actor && actor->sakTransmit();
  return {set == expected.set,
          fmt::format("{} has {}sakTransmit", expected.port.text(), set ? "" : "no ")};
}

Finding Findings::of(HasSak const& expected) const {
  auto const actor = actorOf(expected.port, std::nullopt);
  Sak const sak = actor ? actor->distSak() : Sak();
  return {(sak != Sak()) == expected.any,
          fmt::format("{} has {}", expected.port.text(), sakOrNone(sak))};
}

Finding Findings::of(SameSak const& expected) const {
  Sak const mine = sakOf(expected.port);
  auto const worldOf = [&](PortName const& port) -> Vesk::World& {
    return simulation_.switchOf(port.switchName).world();
  };
  Sak other;
  std::string otherText;
  auto const* port = std::get_if<PortName>(&expected.as);
  if (port) {
    other = sakOf(*port);
    otherText = port->text() + " sends with " + sakOrNone(other);
  } else {
    other = simulation_.sakHistory().marked(std::get<Mark>(expected.as).name, expected.port).sak;
    otherText = "sent then with " + sakOrNone(other);
  }
  bool const both = mine != Sak() && other != Sak();
  bool const same =
      sameSak({mine, worldOf(expected.port)}, {other, worldOf(port ? *port : expected.port)});
  return {both && same == expected.same,
          fmt::format("{} sends with {}, {}", expected.port.text(), sakOrNone(mine), otherText)};
}

Finding Findings::of(HasRotated const& expected) const {
  SakHistory const& history = simulation_.sakHistory();
  uint32_t times = history.rotations(expected.port);
  if (expected.since) times -= history.marked(expected.since->name, expected.port).rotations;
  return {times == expected.times, fmt::format("{} has rotated {} time{}", expected.port.text(),
                                               times, times == 1 ? "" : "s")};
}

Finding Findings::of(HasPeerPacketNumber const& expected) const {
  std::string const port = expected.port.text();
  auto const cpStatus = statusOf(expected.port.switchName).cpStatus(intfOf(expected.port));
  if (!cpStatus) return {false, port + " is absent"};
  Macsec::AssociationNumber const an =
      expected.an ? Macsec::AssociationNumber(*expected.an) : newestAn(*cpStatus);
  Macsec::RxLPN const* const taken = cpStatus->rxLPN(an);
  uint32_t const number = taken ? taken->lpn() : 0;
  return {number == expected.number,
          fmt::format("{} has packet number {} from its peer for AN {}", port, number, an.value())};
}

std::string const& switchNameOf(Expectation const& expectation) {
  return std::visit(
      [](auto const& what) -> std::string const& {
        if constexpr (requires { what.port; }) {
          return what.port.switchName;
        } else {
          return what.switchName;
        }
      },
      expectation.what);
}

}  // namespace Lab
