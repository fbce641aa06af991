#include "lab/judge/invariants/ExplainNamesCauses.h"

#include <fmt/format.h>

#include <algorithm>

namespace Lab {

namespace {

using Macsecd::Cause;
using Macsecd::CauseKind;

// Worth knowing of a link that is well.
bool isNoTrouble(CauseKind kind) {
  return kind == CauseKind::fallbackInUse || kind == CauseKind::formerConfiguration;
}

// A key is being changed.
bool isPassing(CauseKind kind) {
  return kind == CauseKind::peerNotReceiving || kind == CauseKind::waitingToSend;
}

bool areEqual(Macsecd::ProfileConfig const& a, Macsecd::ProfileConfig const& b) {
  auto const same = [](auto const& one, auto const& other) {
    return one.has_value() == other.has_value() &&
           (!one || (one->ckn == other->ckn && one->cak == other->cak));
  };
  return same(a.key, b.key) && same(a.fallbackKey, b.fallbackKey) && !a.dot1x && !b.dot1x &&
         a.cipherSuite == b.cipherSuite;
}

// Both ends are configured alike, and have a key in use. (One that has lost its peers for a while
// goes on with the key that it has, and may have none in use.)
bool isWell(Link const& link) {
  return areEqual(*link.a.profile(), *link.b.profile()) && link.a.hasPrincipal() &&
         link.b.hasPrincipal();
}

// Whether a cause that anybody could check is on; nothing for all others.
std::optional<bool> isOn(LinkEnd const& end, CauseKind kind) {
  switch (kind) {
    case CauseKind::notConfigured:
      return !end.profile();
    case CauseKind::shutDown:
      return end.owner.config().shutdown;
    case CauseKind::fips:
      return end.owner.config().fips;
    case CauseKind::noLink:
      return !end.isUp();
    case CauseKind::noInterface:
      return end.owner.isDeleted(end.intfId);
    case CauseKind::deviceDown:
      return end.owner.hardware().isDeviceDown(end.intfId);
    case CauseKind::noKey:
      return end.profile() && !end.profile()->key && !end.profile()->dot1x;
    case CauseKind::waitingForKey:
      return end.profile() && end.profile()->dot1x;
    default:
      return std::nullopt;
  }
}

}  // namespace

ExplainNamesCauses::ExplainNamesCauses(Simulation const& simulation, Calm const& calm)
    : Invariant(
          simulation, "explain-names-causes",
          fmt::format("While a port isn't open, its explanation names a cause, and one that is "
                      "on; of an open link that nothing has disturbed for {} seconds it names "
                      "none.",
                      kSettled)),
      calm_(calm) {}

void ExplainNamesCauses::instantDone(double time) {
  if (!isDue(time, kBetweenLooks)) return;
  for (size_t wire = 0; wire < simulation().scenario().wires.size(); ++wire) {
    for (LinkEnd const& end : endsOf(simulation(), wire)) {
      if (end.owner.isStarted() && end.owner.host().running()) look(wire, end);
    }
  }
}

void ExplainNamesCauses::look(size_t wire, LinkEnd const& end) {
  Vesk::WorldScope const scope(end.owner.world());
  auto const causes = explain(end.owner.host(), end.intfId).causes;
  if (end.passes()) return lookAtOpen(wire, end, causes);
  changes_.erase(end.name);
  if (causes.empty()) return breaks(end.name.text() + " isn't open, and no cause is named");
  if (isOn(end, causes.front().kind).value_or(true)) return;
  breaks(fmt::format("{} names {}, which isn't so", end.name.text(),
                     Vesk::stringValue(causes.front().kind)));
}

void ExplainNamesCauses::lookAtOpen(size_t wire, LinkEnd const& end,
                                    std::vector<Cause> const& causes) {
  auto const link = linkOf(simulation(), wire);
  if (calm_.withoutStrangers(wire) < kSettled || !link || !isWell(*link)) {
    changes_.erase(end.name);
    return;
  }
  if (std::ranges::none_of(causes, isPassing, &Cause::kind)) changes_.erase(end.name);
  for (Cause const& cause : causes) {
    if (isNoTrouble(cause.kind)) continue;
    double const since = changes_.try_emplace(end.name, now()).first->second;
    if (isPassing(cause.kind) && now() - since <= kChange) continue;
    breaks(fmt::format("{} is open and well, and {} is named", end.name.text(),
                       Vesk::stringValue(cause.kind)));
  }
}

}  // namespace Lab
