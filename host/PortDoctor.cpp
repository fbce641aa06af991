#include "host/PortDoctor.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/PortActors.h"
#include "runtime/Log.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

constexpr double kLateness = 1;
constexpr double kMostPatience = 3600;

Vesk::LogHandle const MACSECD_PORT_BOUND_ANEW(
    "MACSECD_PORT_BOUND_ANEW", Vesk::LogSeverity::warning,
    "Interface %s is bound to its profile anew: %s",
    "A port was in a state that it doesn't leave by itself, and starts over.",
    "If it happens again and again, see what 'macsecctl explain' says at both ends.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_STOOD_STILL(
    "MACSECD_STOOD_STILL", Vesk::LogSeverity::warning, "The process stood still for %s seconds",
    "Peers that were lost at this moment weren't: nobody listened to them.",
    "Give the process more of the processor, and see whether the machine swaps or was suspended.",
    0.0, 1.0);

}  // namespace

struct PortDoctor::Timer final : Zorn::TimerReactor<PortDoctor> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().round(); }
};

PortDoctor::PortDoctor(Vesk::Ptr<Macsec::Config> config, Vesk::Ptr<Macsec::Status const> status,
                       Vesk::Ptr<Zorn::TimerWheel> wheel, TransmitHold const& transmitHold,
                       PortTroubles treated)
    : config_(std::move(config)),
      status_(std::move(status)),
      transmitHold_(transmitHold),
      treated_(std::move(treated)),
      timer_(Vesk::make<Timer>(*this, std::move(wheel))) {
  timer_->timeMinIs(Vesk::now() + lifeTime() / 3);
}

PortDoctor::~PortDoctor() { Vesk::retire(timer_); }

void PortDoctor::round() {
  double const late = Vesk::now() - timer_->time();
  if (late > kLateness) {
    ++counts_.stoodStill;
    counts_.longest = std::max(counts_.longest, late);
    Vesk::log(MACSECD_STOOD_STILL, static_cast<uint64_t>(late));
  }
  timer_->timeMinIs(Vesk::now() + lifeTime() / 3);
  std::vector<Lumo::IntfId> bound;
  for (Macsec::IntfConfig const& intf : config_->intfConfig()) bound.push_back(intf.intfId());
  for (Lumo::IntfId const intfId : bound) lookAt(intfId);
  std::erase_if(cases_, [&](auto const& entry) { return !config_->intfConfig(entry.first); });
}

void PortDoctor::lookAt(Lumo::IntfId intfId) {
  auto const trouble = troubleOf(intfId);
  auto const known = cases_.find(intfId);
  if (!trouble || !treated_.contains(*trouble)) {
    if (known != cases_.end()) seemsWell(known);
    return;
  }
  if (known == cases_.end()) {
    cases_[intfId] = {Vesk::now()};
    return;
  }
  Case& thisCase = known->second;
  if (Vesk::now() < thisCase.since + patience(intfId, thisCase.boundAnew)) return;
  thisCase = {Vesk::now(), thisCase.boundAnew + 1};
  bindAnew(intfId, *trouble);
}

// Well is who has a key in use. Without peers, as after every new binding, nobody can tell.
void PortDoctor::seemsWell(Cases::iterator known) {
  auto const port = status_->portStatus(known->first);
  if (port && principalOf(*port)) {
    cases_.erase(known);
  } else {
    known->second.since = Vesk::now();
  }
}

std::optional<PortTrouble> PortDoctor::troubleOf(Lumo::IntfId intfId) const {
  auto const port = status_->portStatus(intfId);
  if (!port || !hasLivePeer(*port)) return std::nullopt;
  auto const principal = principalOf(*port);
  if (!principal) return PortTrouble::notPrincipal;
  if (transmitHold_.reason(intfId) == TransmitHold::Reason::spentKey && !principal->electedSelf()) {
    return PortTrouble::spentKey;
  }
  auto const cpStatus = status_->cpStatus(intfId);
  if (!cpStatus || !hasOnlyAnotherPeer(*principal, cpStatus->peerSsci())) return std::nullopt;
  return PortTrouble::otherPeer;
}

double PortDoctor::patience(Lumo::IntfId intfId, int boundAnew) const {
  double const patience = std::min(std::ldexp(2 * lifeTime(), boundAnew), kMostPatience);
  auto const port = status_->portStatus(intfId);
  if (principalOf(*port)) return patience;
  for (Macsec::MkaActorStatus& actor : port->actorStatus()) {
    if (!actor.defaultActor()) continue;
    return patience + status_->defaultKeyActivationPeriod();
  }
  return patience;
}

// The new binding makes the port from its beginnings.
void PortDoctor::bindAnew(Lumo::IntfId intfId, PortTrouble trouble) {
  auto const profile = config_->profile(config_->intfConfig(intfId)->profileName());
  if (!profile) return;
  ++counts_.boundAnew;
  Vesk::log(MACSECD_PORT_BOUND_ANEW, intfId, textOf(trouble));
  profile->intfDel(intfId);
  profile->intfIs(intfId, true);
}

}  // namespace Macsecd
