#include "engine/MkaPortSmReactors.h"
#include "runtime/Assert.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"
#include "runtime/World.h"

// Which actor of a port is principal. An actor that isn't key server becomes principal the moment
// it receives a SAK, since its peer has chosen for it; one that is wins by election.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

Vesk::LogHandle const MKA_KEY_IN_USE(
    "MKA_KEY_IN_USE", Vesk::LogSeverity::notice,
    "Configured key %s currently in use on interface %s",
    "Configured primary key is the operational key on the interface.", Vesk::NoActionRequired, 0.0,
    1.0);

Vesk::LogHandle const MKA_FALLBACK_KEY_IN_USE(
    "MKA_FALLBACK_KEY_IN_USE", Vesk::LogSeverity::warning,
    "Configured fallback key %s currently in use on interface %s",
    "The fallback key is the operational key on the interface. This could indicate a problem with "
    "the configured primary key.",
    "Check the primary key configuration.", 0.0, 1.0);

}  // namespace

struct MkaPortSm::Candidates {
  Vesk::Ptr<MkaActorStatus> configuredPrimary;
  Vesk::Ptr<MkaActorStatus> operationalPrimary;
  Vesk::Ptr<MkaActorStatus> configuredDefault;
  Vesk::Ptr<MkaActorStatus> operationalDefault;
};

void MkaPortSm::logKeyInUse(MkaActorStatus const& actor) const {
  Vesk::log(actor.defaultActor() ? MKA_FALLBACK_KEY_IN_USE : MKA_KEY_IN_USE, actor.name(), intfId_);
}

// While an actor is marked, others may be told of it and elect: the outermost election has the last
// word.
struct MkaPortSm::Election {
  explicit Election(MkaPortSm& of) : sm(of) { ++sm.elections_; }
  ~Election() { --sm.elections_; }
  // An actor has been marked, or a mark taken away.
  void hasMarked() const {
    if (sm.elections_ == 1) sm.checkPrincipal();
  }
  MkaPortSm& sm;
};

// `principalActorCkn` is empty or names an actor that is principal, and no other actor is.
void MkaPortSm::checkPrincipal() const {
#ifndef NDEBUG
  for (MkaActorStatus& actor : portStatus()->actorStatus()) {
    VESK_ASSERT(!actor.principal() || actor.name() == principalActorCkn_);
  }
  auto const principal = portStatus()->actorStatus(principalActorCkn_);
  VESK_ASSERT(principalActorCkn_.empty() || (principal && principal->principal()));
#endif
}

void MkaPortSm::doElectPrincipalActor() {
  Election const election(*this);
  VESK_TRACE(8, ": IntfId ", intfId_);
  if (defaultActorTimer_->isArmed()) defaultActorTimer_->timeMinIs(Zorn::never);
  VESK_TRACE(3, ": Starting principal actor election on ", intfId_);
  auto const old = oldPrincipal();
  auto const chosen = pick(candidates());
  if (!chosen) {
    cleanUpOldPrincipal(old);
    return;
  }
  bool const isOther = !old || old->name() != chosen->name();
  if (old && isOther) old->principalIs(false);
  VESK_TRACE(1, ": Marking ", chosen->name(), " as principal actor on ", intfId_);
  if (isOther) logKeyInUse(*chosen);
  mark(*chosen, old ? old->name() : Vesk::String8());
  election.hasMarked();
}

// Whoever is told may have taken the actor away, or had another one elected.
void MkaPortSm::mark(MkaActorStatus& chosen, Vesk::String8 const& former) {
  if (isHere(chosen) && principalActorCkn_ == former) chosen.principalIs(true);
  if (!isHere(chosen)) {
    doElectPrincipalActor();
  } else if (principalActorCkn_ == former) {
    principalActorCknIs(chosen.principal() ? chosen.name() : Vesk::String8());
  } else if (principalActorCkn_ != chosen.name()) {
    chosen.principalIs(false);
  }
}

Vesk::Ptr<MkaActorStatus> MkaPortSm::oldPrincipal() {
  if (principalActorCkn_.empty()) return nullptr;
  VESK_TRACE(3, ": Existing principal actor on ", intfId_, " is ", principalActorCkn_);
  auto old = portStatus()->actorStatus(principalActorCkn_);
  if (!old) principalActorCknIs("");
  return old;
}

// Of several operational actors the last in the order of the collection is kept.
MkaPortSm::Candidates MkaPortSm::candidates() const {
  Vesk::String8 const& primary = intfStatus()->key().ckn();
  Vesk::String8 const& fallback = intfStatus()->defaultKey().ckn();
  Candidates found;
  found.configuredPrimary = portStatus()->actorStatus(primary);
  found.configuredDefault = portStatus()->actorStatus(fallback);
  for (MkaActorStatus& actor : portStatus()->actorStatus()) {
    if (!actor.success()) continue;
    if (actor.name() != primary && !actor.defaultActor()) found.operationalPrimary = &actor;
    if (actor.name() != fallback && actor.defaultActor()) found.operationalDefault = &actor;
  }
  return found;
}

Vesk::Ptr<MkaActorStatus> MkaPortSm::pick(Candidates const& from) const {
  if (from.configuredPrimary && from.configuredPrimary->success()) {
    VESK_TRACE(3, ": Picking configured primary actor ", from.configuredPrimary->name(),
               " as principal actor on ", intfId_);
    return from.configuredPrimary;
  }
  if (from.operationalPrimary) {
    VESK_TRACE(3, ": Picking operational primary actor ", from.operationalPrimary->name(),
               " as principal actor on ", intfId_);
    return from.operationalPrimary;
  }
  if (from.configuredDefault && from.configuredDefault->success()) {
    VESK_TRACE(3, ": Picking configured default actor ", from.configuredDefault->name(),
               " as principal actor on ", intfId_);
    return from.configuredDefault;
  }
  if (from.operationalDefault) {
    VESK_TRACE(3, ": Picking operational default actor ", from.operationalDefault->name(),
               " as principal actor on ", intfId_);
    return from.operationalDefault;
  }
  VESK_TRACE(3, ": Failed to pick a principal actor on ", intfId_);
  return nullptr;
}

void MkaPortSm::cleanUpOldPrincipal(Vesk::Ptr<MkaActorStatus> const& old) {
  if (!old) return;
  VESK_TRACE(3, ": Cleaning up old principal actor ", old->name(), " on ", intfId_);
  unmark(*old);
}

// Whoever is told may have had one elected.
void MkaPortSm::unmark(MkaActorStatus& principal) {
  principal.principalIs(false);
  if (!principal.principal() && principalActorCkn_ == principal.name()) principalActorCknIs("");
}

void MkaPortSm::handleDefaultKeyActivation() {
  VESK_TRACE(8, ": IntfId ", intfId_);
  if (!initialized_) return;
  doElectPrincipalActor();
  defaultActorTimer_->timeMinIs(Zorn::never);
}

void MkaPortSm::PortStatusReactor::ActorStatusReactor::handleActorSuccess() {
  VESK_TRACE(8, ": Actor ", fwkKey(), " on ", owner().intfId_);
  auto actor = owner().portStatus()->actorStatus(fwkKey());
  if (actor->success()) {
    handleSucceeded(*actor);
  } else {
    handleFailed(*actor);
  }
}

void MkaPortSm::PortStatusReactor::ActorStatusReactor::handleSucceeded(MkaActorStatus& actor) {
  MkaPortSm& sm = owner();
  VESK_TRACE(8, ": Actor ", actor.name(), " succeeded on ", sm.intfId_);
  if (!actor.electedSelf()) {
    VESK_TRACE(3, ": Actor ", actor.name(), " is not the elected key server on ", sm.intfId_,
               ". Bailing");
    return;
  }
  if (actor.defaultActor() && sm.principalActorCkn_.empty() && !sm.defaultActorTimer_->isArmed()) {
    VESK_TRACE(3, ": Starting default actor activation timer on ", sm.intfId_);
    sm.defaultActorTimer_->timeMinIs(Vesk::now() + sm.status()->defaultKeyActivationPeriod());
    return;
  }
  VESK_TRACE(3, ": Re-evaluating principal actor on ", sm.intfId_);
  sm.doElectPrincipalActor();
}

void MkaPortSm::PortStatusReactor::ActorStatusReactor::handleFailed(MkaActorStatus& actor) {
  MkaPortSm& sm = owner();
  VESK_TRACE(3, ": Actor ", actor.name(), " failed on interface ", sm.intfId_);
  if (!actor.principal()) return;
  if (sm.actorDeletionTimer_->isArmed()) {
    VESK_TRACE(8, "Killing the actorDeletionTimer");
    sm.actorDeletionTimer_->timeMinIs(Zorn::never);
  }
  if (actor.electedSelf()) {
    VESK_TRACE(1, ": Actor ", actor.name(), " was the principal actor. Electing new actor on ",
               sm.intfId_);
    sm.doElectPrincipalActor();
    return;
  }
  VESK_TRACE(1, ": Unmarking ", actor.name(), " as the principal actor on ", sm.intfId_);
  Election const election(sm);
  sm.unmark(actor);
  election.hasMarked();
}

void MkaPortSm::PortStatusReactor::ActorStatusReactor::handleDistSak() {
  MkaPortSm& sm = owner();
  VESK_TRACE(8, ": Actor ", fwkKey(), " on ", sm.intfId_);
  auto actor = sm.portStatus()->actorStatus(fwkKey());
  if (actor->distSak() != Sak()) advanceAn(actor->distSak().an());
  if (!sm.isHere(*actor)) return;
  if (!actor->electedSelf()) markPrincipal(*actor);
  VESK_TRACE(3, ": Starting actor deletion timer on ", sm.intfId_);
  sm.actorDeletionTimer_->timeMinIs(Vesk::now() + sm.status()->actorDelPeriod());
}

// IEEE 802.1X-2010, 9.9.
void MkaPortSm::PortStatusReactor::ActorStatusReactor::advanceAn(AssociationNumber an) {
  bool const wraps = an.value() == AssociationNumber::max;
  owner().portStatus()->anOfNextKeyIs(AssociationNumber(wraps ? 0 : an.value() + 1));
}

void MkaPortSm::PortStatusReactor::ActorStatusReactor::markPrincipal(MkaActorStatus& actor) {
  MkaPortSm& sm = owner();
  Election const election(sm);
  VESK_TRACE(3, ": Actor ", actor.name(), " on ", sm.intfId_,
             " is not the key server. Marking it as the principal actor");
  Vesk::String8 const former = sm.principalActorCkn_;
  if (!former.empty() && former != actor.name()) {
    auto old = sm.portStatus()->actorStatus(former);
    VESK_TRACE(3, ": Removing old principal actor ", former, " on ", sm.intfId_);
    old->principalIs(false);
  }
  VESK_TRACE(1, ": Marking actor ", actor.name(), " to be principal", " on ", sm.intfId_);
  if (actor.name() != sm.principalActorCkn_) sm.logKeyInUse(actor);
  sm.mark(actor, former);
  election.hasMarked();
}

}  // namespace Macsec
