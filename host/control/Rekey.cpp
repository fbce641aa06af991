#include "host/control/Rekey.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/text/PortText.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

using Macsec::MkaActorStatus;

std::string seeExplain(char const* name) { return fmt::format("see 'macsecctl explain {}'", name); }

Result<> checkKeyServer(char const* name, MkaActorStatus const& actor) {
  if (actor.electedSelf()) return {};
  if (actor.keyServer() == Macsec::Sci()) {
    return Fault{fmt::format("{} has no key server", name), seeExplain(name)};
  }
  return Fault{
      fmt::format("the key server of {} is {}, not this switch", name, sciText(actor.keyServer())),
      "run 'macsecctl rekey' there"};
}

// A key that isn't in use yet must not be followed by the next one: the port has room for two.
Result<> checkSettled(char const* name, MkaActorStatus const& actor) {
  if (actor.sakTransmit() || isNone(actor.distSak())) return {};
  return Fault{
      fmt::format("{} of {} isn't in use at both ends yet", keyText(actor.distSak()), name),
      "wait some seconds; if it stays so, " + seeExplain(name)};
}

Result<> checkSecured(Host const& host, Lumo::IntfId intfId, MkaActorStatus const& actor) {
  char const* const name = intfId.stringValue().charPtr();
  if (auto leads = checkKeyServer(name, actor); !leads) return leads;
  if (actor.livePeer().empty()) {
    return Fault{fmt::format("{} has no live peer", name), seeExplain(name)};
  }
  auto const cp = host.status()->cpStatus(intfId);
  if (!cp || !cp->controlledPortEnabled()) {
    return Fault{fmt::format("{} isn't secured", name), seeExplain(name)};
  }
  return checkSettled(name, actor);
}

}  // namespace

// The guard of the key server holds a key that is wanted back until it expires. One that has
// expired before is let expire once more.
Result<Rekeyed> rekey(Host& host, Lumo::IntfId intfId) {
  Vesk::WorldScope const scope(host.world());
  char const* const name = intfId.stringValue().charPtr();
  auto const keyServerSm = host.keyServerSm(intfId);
  if (!keyServerSm) return Fault{fmt::format("no key is in use on {}", name), seeExplain(name)};
  auto const actor = keyServerSm->mkaActorStatus();
  if (auto const secured = checkSecured(host, intfId, *actor); !secured) return secured.fault();
  actor->newSakIs(true);
  auto const& guard = keyServerSm->mkaPeriodicTimer();
  if (guard.isArmed()) return Rekeyed{"", std::max(0.0, guard.time() - Vesk::now())};
  keyServerSm->handleMkaLifetimeTimerExpiry();
  return Rekeyed{sakText(actor->distSak()), 0};
}

}  // namespace Macsecd
