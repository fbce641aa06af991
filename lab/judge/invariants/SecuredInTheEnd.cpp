#include "lab/judge/invariants/SecuredInTheEnd.h"

#include <fmt/format.h>

#include "host/explain/Explain.h"
#include "lab/world/PortView.h"

namespace Lab {

namespace {

bool areEqual(std::optional<Macsecd::KeyConfig> const& a,
              std::optional<Macsecd::KeyConfig> const& b) {
  return a && b && a->ckn == b->ckn && a->cak == b->cak;
}

// The keys of both ends fit without a doubt. (A fallback key alone is no key to run on, and beside
// 802.1X a configured primary key isn't in force. Where one's primary key is the other's fallback
// key, each holds on to its own primary one.)
bool doKeysFit(Macsecd::ProfileConfig const& a, Macsecd::ProfileConfig const& b) {
  if (!a.key || !b.key || a.dot1x || b.dot1x) return false;
  if (areEqual(a.key, b.key)) return true;
  bool const isCrossed = areEqual(a.key, b.fallbackKey) || areEqual(a.fallbackKey, b.key);
  return !isCrossed && areEqual(a.fallbackKey, b.fallbackKey);
}

// A member that comes with this end's own SCI is none.
bool haveOneSci(Link const& link) {
  auto const a = link.a.owner.host().status()->portStatus(link.a.intfId);
  auto const b = link.b.owner.host().status()->portStatus(link.b.intfId);
  return a && b && a->mySci() == b->mySci();
}

bool canBeSecured(Link const& link) {
  auto const* const a = link.a.profile();
  auto const* const b = link.b.profile();
  if (!a || !b || link.a.owner.config().shutdown || link.b.owner.config().shutdown) return false;
  return a->cipherSuite == b->cipherSuite && doKeysFit(*a, *b) && !haveOneSci(link);
}

bool usesPrimaryKey(LinkEnd const& end) {
  auto const principal = PortView(*end.owner.host().status(), end.intfId).principal();
  return !principal || !principal->defaultActor();
}

std::string causeAt(LinkEnd const& end) {
  Vesk::WorldScope const scope(end.owner.world());
  auto const causes = explain(end.owner.host(), end.intfId).causes;
  return causes.empty() ? "nothing" : Vesk::stringValue(causes.front().kind);
}

}  // namespace

SecuredInTheEnd::SecuredInTheEnd(Simulation const& simulation, Calm const& calm)
    : Invariant(simulation, "secured-in-the-end",
                fmt::format(
                    "{} seconds after the last fault every link whose ends have an equal key, and "
                    "SCIs that differ, is open, with a live peer at each end; both have a key in "
                    "use, or send with the same. Where their primary keys are equal, that isn't "
                    "the fallback key.",
                    kBound)),
      calm_(calm) {}

void SecuredInTheEnd::ended() {
  for (size_t wire = 0; wire < simulation().scenario().wires.size(); ++wire) {
    auto const link = linkOf(simulation(), wire);
    if (!link || calm_.of(wire) < kBound || !canBeSecured(*link)) continue;
    bool const isSecured = link->isInUse() || (link->isOpen() && link->sendsWithOneKey());
    if (isSecured && areEqual(link->a.profile()->key, link->b.profile()->key) &&
        !(usesPrimaryKey(link->a) && usesPrimaryKey(link->b))) {
      breaks(fmt::format("{} and {} have the same primary key, and use the fallback key",
                         link->a.name.text(), link->b.name.text()));
    }
    if (isSecured) continue;
    breaks(
        fmt::format("{} and {} aren't both open with one key; the first explains {}, the second {}",
                    link->a.name.text(), link->b.name.text(), causeAt(link->a), causeAt(link->b)));
  }
}

}  // namespace Lab
