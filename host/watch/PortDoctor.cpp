#include "host/watch/PortDoctor.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/text/KeyText.h"
#include "host/text/Limits.h"
#include "host/watch/Backoff.h"
#include "host/watch/PortActors.h"
#include "runtime/Log.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

Vesk::LogHandle const MACSECD_PORT_BOUND_ANEW(
    "MACSECD_PORT_BOUND_ANEW", Vesk::LogSeverity::warning,
    "Interface %s is bound to its profile anew: %s",
    "A port was in a state that it doesn't leave by itself, and starts over.",
    "If it happens again and again, see what 'macsecctl explain' says at both ends.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_GOES_OVER_LATE(
    "MACSECD_GOES_OVER_LATE", Vesk::LogSeverity::notice,
    "Interface %s goes over to its new key late: %s",
    "A key server goes over to a new key when all its peers have it. At that moment its own "
    "hardware didn't have it yet.",
    "If it happens again and again, find out why the hardware is slow.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_ELECTS_AGAIN(
    "MACSECD_ELECTS_AGAIN", Vesk::LogSeverity::notice,
    "Interface %s chooses again which of its keys is in use: %s",
    "A key comes into use when its actor succeeds. This one had succeeded before it came to lead.",
    Vesk::NoActionRequired, 0.0, 1.0);

Vesk::LogHandle const MACSECD_STOOD_STILL(
    "MACSECD_STOOD_STILL", Vesk::LogSeverity::warning, "The process stood still for %s seconds",
    "Peers that were lost at this moment weren't: nobody listened to them.",
    "Give the process more of the processor, and see whether the machine swaps or was suspended.",
    0.0, 1.0);

// Nothing is lost by it, and the port doesn't start over.
bool isMendedInPlace(PortTrouble trouble) {
  return trouble == PortTrouble::waitingToSend || trouble == PortTrouble::overlookedKey;
}

}  // namespace

struct PortDoctor::Timer final : Zorn::TimerReactor<PortDoctor> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().round(); }
};

PortDoctor::PortDoctor(Vesk::Ptr<Macsec::Config> config, PortChanges& ports,
                       Vesk::Ptr<Zorn::TimerWheel> wheel, TransmitHold const& transmitHold,
                       IsOpen isOpen, PortTroubles treated)
    : config_(std::move(config)),
      ports_(ports),
      status_(ports.status()),
      transmitHold_(transmitHold),
      isOpen_(std::move(isOpen)),
      treated_(std::move(treated)),
      timer_(Vesk::make<Timer>(*this, std::move(wheel))) {
  ports_.listenerIs(*this);
  for (Macsec::MkaPortStatus& port : status_->portStatus()) portChanged(port.intfId());
  timer_->timeMinIs(Vesk::now() + lifeTime() / 3);
}

void PortDoctor::end() {
  ports_.listenerDel(*this);
  Vesk::endReactors(timer_);
}

void PortDoctor::round() {
  double const late = Vesk::now() - timer_->time();
  if (late > Limits::kLateness) {
    ++counts_.stoodStill;
    counts_.longest = std::max(counts_.longest, late);
    Vesk::log(MACSECD_STOOD_STILL, static_cast<uint64_t>(late));
  }
  timer_->timeMinIs(Vesk::now() + lifeTime() / 3);
  for (Lumo::IntfId const intfId : portsOfRound()) {
    lookAt(intfId);
    if (!isWell(intfId)) toLookAt_.insert(intfId);
  }
  std::erase_if(cases_, [&](auto const& entry) { return !config_->intfConfig(entry.first); });
}

std::vector<Lumo::IntfId> PortDoctor::portsOfRound() {
  std::vector<Lumo::IntfId> ports(toLookAt_.begin(), toLookAt_.end());
  toLookAt_.clear();
  for (auto const& [intfId, reason] : transmitHold_.held()) ports.push_back(intfId);
  for (auto const& [intfId, known] : cases_) ports.push_back(intfId);
  std::ranges::sort(ports);
  ports.erase(std::unique(ports.begin(), ports.end()), ports.end());
  return ports;
}

// Whether nothing can ail it before something has changed, be it open or not.
bool PortDoctor::isWell(Lumo::IntfId intfId) const {
  auto const port = status_->portStatus(intfId);
  if (!port) return true;
  auto const principal = principalOf(*port);
  auto const cpStatus = status_->cpStatus(intfId);
  bool const knowsItsPeer = cpStatus && cpStatus->peerSsci() != Macsec::Ssci();
  return principal && knowsItsPeer && !troubleWith(*principal, intfId);
}

void PortDoctor::lookAt(Lumo::IntfId intfId) {
  auto const trouble = troubleOf(intfId);
  if (!trouble || !treated_.contains(*trouble)) {
    if (auto const known = cases_.find(intfId); known != cases_.end()) seemsWell(known);
    return;
  }
  Case& thisCase = cases_[intfId];
  Members members = membersOf(*status_->portStatus(intfId));
  if (thisCase.trouble != trouble || thisCase.members != members) {
    thisCase = {trouble, std::move(members), Vesk::now(), thisCase.boundAnew};
  }
  if (Vesk::now() < thisCase.since + patience(intfId, thisCase)) return;
  thisCase.since = Vesk::now();
  if (*trouble == PortTrouble::waitingToSend) return goOver(intfId);
  if (*trouble == PortTrouble::overlookedKey) return electAgain(intfId);
  ++thisCase.boundAnew;
  bindAnew(intfId, *trouble);
}

// Well is who has a key in use. Without peers, as after every new binding, nobody can tell.
void PortDoctor::seemsWell(Cases::iterator known) {
  auto const port = status_->portStatus(known->first);
  if (isOpen_(known->first) || (port && principalOf(*port))) {
    cases_.erase(known);
  } else {
    known->second.trouble = std::nullopt;
  }
}

std::optional<PortTrouble> PortDoctor::troubleOf(Lumo::IntfId intfId) const {
  auto const port = status_->portStatus(intfId);
  if (!port || !hasLivePeer(*port)) return std::nullopt;
  auto const principal = principalOf(*port);
  auto const cpStatus = status_->cpStatus(intfId);
  if (principal && cpStatus && hasMissedItsMoment(*principal, *cpStatus)) {
    return PortTrouble::waitingToSend;
  }
  auto const overlooked = overlookedKey(intfId);
  if (principal && overlooked && overlooked != principal) return PortTrouble::overlookedKey;
  auto const trouble = principal ? troubleWith(*principal, intfId) : PortTrouble::notPrincipal;
  if (!trouble || livesOnFormerKey(intfId, *port)) return std::nullopt;
  return isOpen_(intfId) ? troubleOfOpen(*port, status_->cpStatus(intfId)->txSak()) : trouble;
}

// One without a key in use goes on with the key that it has, which may be nobody's any more.
std::optional<PortTrouble> PortDoctor::troubleOfOpen(Macsec::MkaPortStatus const& port,
                                                     Macsec::Sak const& sak) {
  if (principalOf(port) || doesAnyReceiveWith(port, sak)) return std::nullopt;
  return doesAnyReceive(port) ? PortTrouble::peerNotReceiving : PortTrouble::notPrincipal;
}

std::optional<PortTrouble> PortDoctor::troubleWith(Macsec::MkaActorStatus const& principal,
                                                   Lumo::IntfId intfId) const {
  if (transmitHold_.reason(intfId) == TransmitHold::Reason::spentKey && !principal.electedSelf()) {
    return PortTrouble::spentKey;
  }
  auto const cpStatus = status_->cpStatus(intfId);
  if (!cpStatus || !hasOnlyAnotherPeer(principal, cpStatus->peerSsci())) return std::nullopt;
  return PortTrouble::otherPeer;
}

// A key server that was to begin to send with a new key when its own receive side hadn't got it
// yet. It isn't told again, and would go over when the longest wait for its peers is over.
bool PortDoctor::hasMissedItsMoment(Macsec::MkaActorStatus const& principal,
                                    Macsec::CpStatus const& cpStatus) {
  Macsec::SakContext const& latest = cpStatus.latestSakContext();
  return principal.electedSelf() && principal.sakTransmit() && latest.rxInstalled() &&
         !latest.txEnabled() && SakId::of(latest.sak()) == SakId::of(principal.distSak());
}

// The actor of the primary key if it leads, and so could be principal: where another key is in use,
// it has come to lead after it succeeded, as with a new priority, and nobody elects then.
Vesk::Ptr<Macsec::MkaActorStatus> PortDoctor::overlookedKey(Lumo::IntfId intfId) const {
  auto const intfStatus = status_->intfStatus(intfId);
  auto const port = status_->portStatus(intfId);
  auto const primary = intfStatus ? port->actorStatus(intfStatus->key().ckn()) : nullptr;
  bool const leads = primary && primary->success() && primary->electedSelf();
  return leads && !primary->defaultActor() ? primary : nullptr;
}

// Has peers under such a key alone. Its actor ends with the port, and nobody can make it anew. A
// name that was spelled otherwise before comes back: where an interface has its names written as
// characters, the others of its profile get the new spelling too.
bool PortDoctor::livesOnFormerKey(Lumo::IntfId intfId, Macsec::MkaPortStatus const& port) const {
  auto const intfStatus = status_->intfStatus(intfId);
  if (!intfStatus) return hasLivePeer(port);
  auto const primary = keyNameOctets(intfStatus->key().ckn().view());
  auto const fallback = keyNameOctets(intfStatus->defaultKey().ckn().view());
  for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
    auto const name = keyNameOctets(actor.ckn().view());
    if (!actor.livePeer().empty() && (name == primary || name == fallback)) return false;
  }
  return hasLivePeer(port);
}

PortDoctor::Members PortDoctor::membersOf(Macsec::MkaPortStatus const& port) {
  Members members;
  for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
    for (Macsec::MkaPeer& peer : actor.livePeer()) {
      members.emplace(actor.ckn(), peer.msgId(), actor.electedSelf());
    }
  }
  return members;
}

// Who leads under its fallback key waits before it uses it. That the key is the fallback one at the
// other end can't be seen from here.
bool PortDoctor::mayWaitForPrimaryKey(Macsec::MkaPortStatus const& port) {
  for (Macsec::MkaActorStatus& actor : port.actorStatus()) {
    if (actor.livePeer().empty()) continue;
    if (actor.defaultActor() || !actor.electedSelf()) return true;
  }
  return false;
}

// The longest wait that one of the ends may be in by the rules.
double PortDoctor::legalWait(Lumo::IntfId intfId, PortTrouble trouble) const {
  auto const port = status_->portStatus(intfId);
  double const forPrimaryKey =
      mayWaitForPrimaryKey(*port) ? status_->defaultKeyActivationPeriod() : 0;
  if (trouble == PortTrouble::notPrincipal) return forPrimaryKey;
  // No wait ends these.
  if (trouble == PortTrouble::otherPeer || trouble == PortTrouble::peerNotReceiving) return 0;
  auto const given = SakId::of(principalOf(*port)->distSak());
  if (!given) return forPrimaryKey;
  // A key server begins to send with a new key when its peers receive, or after this period.
  // Another key that is spent, too, as one that was left for the primary key, makes nothing well.
  bool const isAnother = given != SakId::of(status_->cpStatus(intfId)->txSak());
  return isAnother && !transmitHold_.isSpent(intfId, *given) ? status_->latestKeyEnablePeriod() : 0;
}

// A new key that comes meanwhile makes one needless with which nothing was sent.
double PortDoctor::patience(Lumo::IntfId intfId, Case const& thisCase) const {
  if (isMendedInPlace(*thisCase.trouble)) return lifeTime();
  Backoff const own(2 * lifeTime(), Limits::kLastPatience);
  return own.waitAfter(thisCase.boundAnew) + legalWait(intfId, *thisCase.trouble);
}

// With the next MKPDU of a peer it sees again that all of them have the key, and then has it
// itself.
void PortDoctor::goOver(Lumo::IntfId intfId) {
  Vesk::log(MACSECD_GOES_OVER_LATE, intfId, textOf(PortTrouble::waitingToSend));
  principalOf(*status_->portStatus(intfId))->sakTransmitIs(false);
}

// With the next MKPDU of a peer the actor succeeds once more, and the port elects.
void PortDoctor::electAgain(Lumo::IntfId intfId) {
  Vesk::log(MACSECD_ELECTS_AGAIN, intfId, textOf(PortTrouble::overlookedKey));
  overlookedKey(intfId)->successIs(false);
}

// The new binding makes the port from its beginnings.
void PortDoctor::bindAnew(Lumo::IntfId intfId, PortTrouble trouble) {
  auto const bound = config_->intfConfig(intfId);
  auto const profile = bound ? config_->profile(bound->profileName()) : nullptr;
  if (!profile) return;
  ++counts_.boundAnew;
  Vesk::log(MACSECD_PORT_BOUND_ANEW, intfId, textOf(trouble));
  profile->intfDel(intfId);
  profile->intfIs(intfId, true);
}

}  // namespace Macsecd
