#include "engine/MkaPortSmReactors.h"
#include "platform/SameKey.h"
#include "runtime/Assert.h"
#include "runtime/Log.h"
#include "runtime/Trace.h"

// How the keys of an interface become actors, and how actors end. Who is told of a step may change
// the key again: that change has been handled when the step returns, and what remains of the former
// handling has nothing to do.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

Vesk::LogHandle const MKA_CA_CREATED(
    "MKA_CA_CREATED", Vesk::LogSeverity::informational,
    "Connectivity Association for CKN %s created on interface %s",
    "CAK-CKN is configured on the interface for security relationship       with other peers",
    Vesk::NoActionRequired, 120.0, 1.0);

}  // namespace

// IEEE 802.1X-2010, 9.14.
void MkaPortSm::handleKey() {
  if (!initialized_) return;
  Cak const key = intfStatus()->key();
  VESK_TRACE(8, ": Processing new key ", key, " on ", intfId_);
  bool elect = false;
  if (key == Cak()) {
    VESK_TRACE(3, ": Primary key deleted, proceeding to delete all primary actors for ", intfId_);
    elect = deleteActorsOfGoneKey(false);
  } else {
    VESK_TRACE(8, ": Processing new primary key ", key, " on ", intfId_);
    auto actor = portStatus()->actorStatus(key.ckn());
    if (!actor || actor->defaultActor() || !isSameKey(key.cak(), actor->cak())) {
      if (actor) elect = deleteReplacedActor(*actor);
      VESK_TRACE(3, ": Creating actor ", key.ckn(), " on ", intfId_);
      createActorStatus(key, false);
    }
    if (lacksActor(key, false)) {
      createActor(key);
      Vesk::log(MKA_CA_CREATED, key.ckn(), intfId_);
    }
    deleteActorsOfOlderKeys(key, false);
  }
  if (elections_ == 0) checkPrincipal();
  if (elect) doElectPrincipalActor();
}

void MkaPortSm::handleDefaultKey() {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId_);
  Cak const key = intfStatus()->defaultKey();
  bool elect = false;
  if (key == Cak()) {
    VESK_TRACE(3, ": Default key is deleted, proceeding to delete all default actors for ",
               intfId_);
    elect = deleteActorsOfGoneKey(true);
  } else {
    VESK_TRACE(8, ": Processing new default key ", key, " on ", intfId_);
    auto actor = portStatus()->actorStatus(key.ckn());
    if (!actor || !actor->defaultActor() || !isSameKey(key.cak(), actor->cak())) {
      if (actor) elect = deleteReplacedActor(*actor);
      VESK_TRACE(8, ": Creating actor ", key.ckn(), " on ", intfId_);
      createActorStatus(key, true);
    }
    if (lacksActor(key, true)) createActor(key);
    deleteActorsOfOlderKeys(key, true);
  }
  if (elections_ == 0) checkPrincipal();
  if (elect) doElectPrincipalActor();
}

bool MkaPortSm::isInForce(Cak const& key, bool defaultKey) const {
  return key == (defaultKey ? intfStatus()->defaultKey() : intfStatus()->key());
}

bool MkaPortSm::isHere(MkaActorStatus const& actor) const {
  return portStatus()->actorStatus().find(actor.ckn()) == &actor;
}

bool MkaPortSm::lacksActor(Cak const& key, bool defaultKey) const {
  return !mkaActorSm_.find(key.ckn()) && isInForce(key, defaultKey) &&
         portStatus()->actorStatus().find(key.ckn());
}

// Tells whether the principal actor went that was key server: losing any other runs no election.
bool MkaPortSm::deleteActorsOfGoneKey(bool defaultActors) {
  bool elect = false;
  for (auto i = portStatus()->actorStatus().iterator(); i && isInForce(Cak(), defaultActors); ++i) {
    if (i->defaultActor() != defaultActors) continue;
    if (i->principal() && i->electedSelf()) elect = true;
    VESK_TRACE(3, ": Deleting actor ", i->name(), " on ", intfId_);
    mkaActorSmDel(i->name());
    if (i->principal()) principalActorCknIs("");
    portStatus()->actorStatusDel(i);
  }
  return elect;
}

bool MkaPortSm::deleteReplacedActor(MkaActorStatus& actor) {
  Vesk::String8 const ckn = actor.ckn();
  bool const elect = actor.principal() && actor.electedSelf();
  VESK_TRACE(3, ": Deleting actor ", ckn, " on ", intfId_);
  if (actor.principal()) principalActorCknIs("");
  mkaActorSmDel(ckn);
  portStatus()->actorStatusDel(ckn);
  return elect;
}

// Whoever is told of a new actor doesn't see yet that it is a fallback: one that went with a
// primary key is made again, and one of a key that has gone meanwhile goes.
void MkaPortSm::createActorStatus(Cak const& key, bool defaultActor) {
  Vesk::String8 const& ckn = key.ckn();
  portStatus()->actorStatusIs(ckn)->defaultActorIs(defaultActor);
  if (!isInForce(key, defaultActor)) {
    if (!mkaActorSm_.find(ckn)) portStatus()->actorStatusDel(ckn);
  } else if (!portStatus()->actorStatus(ckn)) {
    portStatus()->actorStatusIs(ckn)->defaultActorIs(defaultActor);
  }
}

void MkaPortSm::createActor(Cak const& key) {
  VESK_ASSERT(portStatus()->actorStatus(key.ckn()));
  mkaActorSmIs(key.ckn(), key.cak(), intfId_, status(), pamManager(), hwStatus(), timerWheel_);
}

// An actor of an older key that is principal stays until an election or the sweep removes it.
void MkaPortSm::deleteActorsOfOlderKeys(Cak const& key, bool defaultActors) {
  for (auto i = portStatus()->actorStatus().iterator(); i && isInForce(key, defaultActors); ++i) {
    if (i->defaultActor() != defaultActors || i->principal() || i->name() == key.ckn()) continue;
    VESK_TRACE(3, ": Deleting actor ", i->name(), " on ", intfId_);
    mkaActorSmDel(i->name());
    portStatus()->actorStatusDel(i);
  }
}

// IEEE 802.1X-2010, 9.14.
void MkaPortSm::handleActorDeletion() {
  if (!initialized_) return;
  VESK_TRACE(8, ": IntfId ", intfId_);
  for (auto i = portStatus()->actorStatus().iterator(); i; ++i) {
    if (i->principal() || i->name() == intfStatus()->key().ckn() ||
        i->name() == intfStatus()->defaultKey().ckn()) {
      continue;
    }
    VESK_TRACE(3, ": Deleting actor ", i->name(), " on ", intfId_);
    mkaActorSmDel(i->name());
    portStatus()->actorStatusDel(i);
  }
  actorDeletionTimer_->timeMinIs(Zorn::never);
}

}  // namespace Macsec
