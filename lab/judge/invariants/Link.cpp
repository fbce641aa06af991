#include "lab/judge/invariants/Link.h"

#include <algorithm>

#include "lab/world/PortView.h"

namespace Lab {

Macsecd::ProfileConfig const* LinkEnd::profile() const {
  auto const* const interface = owner.config().interface(name.interface);
  return interface ? owner.config().profile(interface->profile) : nullptr;
}

bool LinkEnd::hasPeer() const {
  auto const port = owner.host().status()->portStatus(intfId);
  if (!port) return false;
  for (Macsec::MkaActorStatus& actor : port->actorStatus()) {
    if (!actor.livePeer().empty()) return true;
  }
  return false;
}

bool LinkEnd::hasPrincipal() const {
  return PortView(*owner.host().status(), intfId).principal() != nullptr;
}

bool Link::isOpen() const { return a.passes() && b.passes() && a.hasPeer() && b.hasPeer(); }

bool Link::isInUse() const { return isOpen() && a.hasPrincipal() && b.hasPrincipal(); }

bool Link::sendsWithOneKey() const {
  Macsec::Sak const &ofA = a.cpStatus()->txSak(), &ofB = b.cpStatus()->txSak();
  return ofA.keyMsgId() == ofB.keyMsgId() && ofA.keyNum() == ofB.keyNum();
}

std::vector<LinkEnd> endsOf(Simulation const& simulation, size_t wire) {
  std::vector<LinkEnd> ends;
  for (PortName const& port : simulation.scenario().wires[wire].ends) {
    ends.push_back(
        {simulation.switchOf(port.switchName), Lumo::IntfId(port.interface.c_str()), port});
  }
  return ends;
}

std::optional<Link> linkOf(Simulation const& simulation, size_t wire) {
  std::vector<LinkEnd> up;
  for (LinkEnd const& end : endsOf(simulation, wire)) {
    if (end.isUp()) up.push_back(end);
  }
  if (up.size() != 2) return std::nullopt;
  return Link{up[0], up[1]};
}

std::optional<size_t> wireOf(Simulation const& simulation, PortName const& port) {
  auto const& wires = simulation.scenario().wires;
  for (size_t wire = 0; wire < wires.size(); ++wire) {
    if (std::ranges::find(wires[wire].ends, port) != wires[wire].ends.end()) return wire;
  }
  return std::nullopt;
}

}  // namespace Lab
