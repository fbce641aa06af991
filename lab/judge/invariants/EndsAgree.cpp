#include "lab/judge/invariants/EndsAgree.h"

#include <fmt/format.h>

#include "host/state/KeyHistory.h"
#include "lab/world/PortView.h"

namespace Lab {

namespace {

// What differs between two open ends; empty if nothing does.
std::string difference(Link const& link) {
  auto const a = link.a.cpStatus(), b = link.b.cpStatus();
  if (!link.sendsWithOneKey()) return "key";
  if (a->txSak().an() != b->txSak().an()) return "association number";
  if (a->cipher() != b->cipher()) return "cipher suite";
  if (a->mySsci() != b->peerSsci() || b->mySsci() != a->peerSsci()) return "SSCI";
  return {};
}

Vesk::Ptr<Macsec::MkaActorStatus> toldToSend(LinkEnd const& end) {
  auto const principal = PortView(*end.owner.host().status(), end.intfId).principal();
  return principal && principal->sakTransmit() ? principal : nullptr;
}

// Whether both ends have been told to send with the same key.
bool areToldToSend(Link const& link) {
  using Macsecd::SakId;
  auto const a = toldToSend(link.a), b = toldToSend(link.b);
  return a && b && SakId::of(a->distSak()) == SakId::of(b->distSak());
}

}  // namespace

EndsAgree::EndsAgree(Simulation const& simulation, Calm const& calm)
    : Invariant(
          simulation, "ends-agree",
          fmt::format(
              "Two open ends with a key in use of a link that nothing has disturbed for {} "
              "seconds send with one key, association number, cipher suite and with the SSCIs that "
              "the other expects, but for {} seconds of a change, and {} after both are told to "
              "send.",
              kSettled, kChange, kLastStep)),
      calm_(calm),
      wires_(simulation.scenario().wires.size()) {}

void EndsAgree::instantDone(double time) {
  for (size_t wire = 0; wire < wires_.size(); ++wire) {
    auto const link = linkOf(simulation(), wire);
    bool const isMeant = link && calm_.of(wire) >= kSettled && link->isInUse();
    std::string const differs = isMeant ? difference(*link) : std::string();
    Since& since = wires_[wire];
    if (differs.empty()) since.agreed = time;
    if (differs.empty() || !areToldToSend(*link)) since.told = time;
    if (time - since.agreed <= kChange && time - since.told <= kLastStep) continue;
    breaks(fmt::format("{} and {} are open with another {} each", link->a.name.text(),
                       link->b.name.text(), differs));
  }
}

}  // namespace Lab
