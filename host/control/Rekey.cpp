#include "host/control/Rekey.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text/PortText.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

using Macsec::MkaActorStatus;

std::string seeExplain(char const* name) { return fmt::format("see 'macsecctl explain {}'", name); }

void requireKeyServer(char const* name, MkaActorStatus const& actor) {
  if (actor.electedSelf()) return;
  if (actor.keyServer() == Macsec::Sci()) {
    throw Fault{fmt::format("{} has no key server", name), seeExplain(name)};
  }
  throw Fault{
      fmt::format("the key server of {} is {}, not this switch", name, sciText(actor.keyServer())),
      "run 'macsecctl rekey' there"};
}

// A key that isn't in use yet must not be followed by the next one: the port has room for two.
void requireSettled(char const* name, MkaActorStatus const& actor) {
  if (actor.sakTransmit() || isNone(actor.distSak())) return;
  throw Fault{fmt::format("{} of {} isn't in use at both ends yet", keyText(actor.distSak()), name),
              "wait some seconds; if it stays so, " + seeExplain(name)};
}

void requireSecured(Host const& host, Lumo::IntfId intfId, MkaActorStatus const& actor) {
  char const* const name = intfId.stringValue().charPtr();
  requireKeyServer(name, actor);
  if (actor.livePeer().empty()) {
    throw Fault{fmt::format("{} has no live peer", name), seeExplain(name)};
  }
  auto const cp = host.status()->cpStatus(intfId);
  if (!cp || !cp->controlledPortEnabled()) {
    throw Fault{fmt::format("{} isn't secured", name), seeExplain(name)};
  }
  requireSettled(name, actor);
}

}  // namespace

// The guard of the key server holds a key that is wanted back until it expires. One that has
// expired before is let expire once more.
Rekeyed rekey(Host& host, Lumo::IntfId intfId) {
  char const* const name = intfId.stringValue().charPtr();
  auto const keyServerSm = host.keyServerSm(intfId);
  if (!keyServerSm) throw Fault{fmt::format("no key is in use on {}", name), seeExplain(name)};
  auto const actor = keyServerSm->mkaActorStatus();
  requireSecured(host, intfId, *actor);
  actor->newSakIs(true);
  auto const& guard = keyServerSm->mkaPeriodicTimer();
  if (guard.isArmed()) return {"", std::max(0.0, guard.time() - Vesk::now())};
  keyServerSm->handleMkaLifetimeTimerExpiry();
  return {sakText(actor->distSak()), 0};
}

}  // namespace Macsecd
