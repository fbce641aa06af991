#include "lab/judge/invariants/OneKeyServer.h"

#include <fmt/format.h>

#include "lab/world/PortView.h"

namespace Lab {

namespace {

using Macsec::MkaActorStatus;
using Macsec::Sci;

// What a member says of itself in an election.
struct Candidate {
  Vesk::Ptr<MkaActorStatus> principal;
  Sci sci;
  uint8_t priority;

  // The lower priority value, then the lower SCI (IEEE 802.1X-2010, 9.4.2).
  bool isSoonerThan(Candidate const& o) const {
    if (priority != o.priority) return priority < o.priority;
    return sci.addr().bytes() < o.sci.addr().bytes();
  }
};

std::optional<Candidate> candidate(LinkEnd const& end) {
  auto const port = end.owner.host().status()->portStatus(end.intfId);
  auto const* const profile = end.profile();
  auto const principal = PortView(*end.owner.host().status(), end.intfId).principal();
  if (!port || !principal || !profile || profile->dot1x || !end.passes()) return std::nullopt;
  return Candidate{principal, port->mySci(), profile->keyServerPriority};
}

}  // namespace

OneKeyServer::OneKeyServer(Simulation const& simulation, Calm const& calm)
    : Invariant(simulation, "one-key-server",
                fmt::format("A port has one principal actor at most; the key server of a link that "
                            "nothing has disturbed for {} seconds is the member of the lower "
                            "priority value, then address, and stays it.",
                            kSettled)),
      calm_(calm) {}

// Of the key in use: a peer may go under another one when it has got other keys.
void OneKeyServer::happened(Event const& event) {
  auto const* const changed = eventOf(event, Macsecd::EventKind::keyServer);
  if (!changed) return;
  PortName const port{event.switchName, changed->interface};
  auto const wire = wireOf(simulation(), port);
  Switch& one = simulation().switchOf(port.switchName);
  Lumo::IntfId const intfId(port.interface.c_str());
  auto const principal = PortView(*one.host().status(), intfId).principal();
  bool const isInUse = principal && principal->ckn().view() == changed->key;
  if (!wire || !isInUse || !one.passes(intfId) || calm_.of(*wire) < kSettled) return;
  breaks(port.text() + " elects another key server, and nothing has happened");
}

void OneKeyServer::instantDone(double) {
  for (size_t wire = 0; wire < simulation().scenario().wires.size(); ++wire) {
    for (LinkEnd const& end : endsOf(simulation(), wire)) countPrincipals(end);
    if (calm_.of(wire) < kSettled) continue;
    if (auto const link = linkOf(simulation(), wire)) lookAtServers(*link);
  }
}

void OneKeyServer::countPrincipals(LinkEnd const& end) {
  auto const port = end.owner.host().status()->portStatus(end.intfId);
  if (!port) return;
  size_t principals = 0;
  for (MkaActorStatus& actor : port->actorStatus()) principals += actor.principal();
  if (principals > 1) breaks(end.name.text() + " has two principal actors");
}

void OneKeyServer::lookAtServers(Link const& link) {
  auto const a = candidate(link.a), b = candidate(link.b);
  if (!a || !b || a->principal->ckn() != b->principal->ckn()) return;
  Sci const& best = a->isSoonerThan(*b) ? a->sci : b->sci;
  if (a->principal->keyServer() == best && b->principal->keyServer() == best) return;
  breaks(fmt::format("{} and {} haven't both elected the better of them", link.a.name.text(),
                     link.b.name.text()));
}

}  // namespace Lab
