#include "host/watch/TransmitHold.h"

#include "host/state/SsciNumber.h"
#include "host/text/Limits.h"
#include "host/text/PortText.h"
#include "host/watch/PortActors.h"
#include "runtime/Log.h"
#include "runtime/World.h"

namespace Macsecd {

namespace {

Vesk::LogHandle const MACSECD_TOO_MANY_MEMBERS(
    "MACSECD_TOO_MANY_MEMBERS", Vesk::LogSeverity::error,
    "Interface %s is closed: there are more than two members on the link",
    "With extended packet numbers a third member has the SSCI of another one, and would encrypt "
    "with the same nonces. Nothing is sent until one of them has gone and a new key is there. An "
    "end that has begun anew counts twice for some seconds.",
    "If it lasts longer than ten seconds, take all but two members off the link.", 0.0, 0.0);

Vesk::LogHandle const MACSECD_OTHER_PEER(
    "MACSECD_OTHER_PEER", Vesk::LogSeverity::warning,
    "Interface %s is closed: its peer has another SCI than before",
    "The SSCIs of the two ends follow from their SCIs. Nothing is sent until the port has begun "
    "anew with the new one.",
    "None; it takes up to half a minute.", 0.0, 0.0);

Vesk::LogHandle const MACSECD_KEY_SPENT(
    "MACSECD_KEY_SPENT", Vesk::LogSeverity::warning,
    "Interface %s is closed: nothing may be sent with key %s any more",
    "It was there while more than two members were on the link, or under another SSCI, or its "
    "packet numbers are used up, or how far they went isn't known. Nothing is sent until a new "
    "key is there.",
    "None; if no new key comes within a minute, see what 'macsecctl explain' says at both ends.",
    0.0, 0.0);

Vesk::LogHandle const MACSECD_SENDS_AGAIN("MACSECD_SENDS_AGAIN", Vesk::LogSeverity::notice,
                                          "Interface %s has a key again that it may send with",
                                          "What held its transmit key back has gone.",
                                          Vesk::NoActionRequired, 0.0, 0.0);

}  // namespace

struct TransmitHold::Timer final : Zorn::TimerReactor<TransmitHold> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().handleTime(); }
};

TransmitHold::TransmitHold(PortChanges& ports, KeyHistory& history, Vesk::Ptr<Input> input,
                           Vesk::Ptr<Zorn::TimerWheel> wheel, KeyServerOf keyServerOf)
    : ports_(ports),
      history_(history),
      input_(std::move(input)),
      keyServerOf_(std::move(keyServerOf)),
      timer_(Vesk::make<Timer>(*this, std::move(wheel))) {
  ports_.listenerIs(*this);
  takeUp();
  for (Lumo::IntfId const intfId : ports_.ports()) look(intfId);
}

// What state machines before these held back is held back until it is looked at.
void TransmitHold::takeUp() {
  for (auto const& entry : input_->forwardingModelInput()) held_[entry.fwkKey()] = Reason::spentKey;
  for (auto const& [intfId, reason] : std::map(held_)) look(intfId);
  if (!held_.empty()) timer_->timeMinIs(Vesk::now());
}

void TransmitHold::end() {
  ports_.listenerDel(*this);
  Vesk::endReactors(timer_);
}

TransmitHold::Reason TransmitHold::reason(Lumo::IntfId intfId) const {
  auto const found = held_.find(intfId);
  return found == held_.end() ? Reason::none : found->second;
}

bool TransmitHold::isSpent(Lumo::IntfId intfId, SakId const& sak) const {
  return history_.isSpent(intfId, sak);
}

TransmitHold::Reason TransmitHold::reasonNow(Lumo::IntfId intfId) const {
  auto const cp = ports_.status()->cpStatus(intfId);
  if (!cp) return Reason::none;
  auto const port = ports_.status()->portStatus(intfId);
  auto const principal = port ? principalOf(*port) : nullptr;
  if (principal && principal->livePeer().members() > 1) return Reason::tooManyMembers;
  if (principal && hasOnlyAnotherPeer(*principal, cp->peerSsci())) return Reason::otherPeer;
  auto const sak = SakId::of(cp->txSak());
  return sak && history_.isSpent(intfId, *sak) ? Reason::spentKey : Reason::none;
}

void TransmitHold::look(Lumo::IntfId intfId) {
  askForKeys(intfId);
  Reason const reason = reasonNow(intfId);
  if (reason == Reason::tooManyMembers) spendKeys(intfId);
  if (reason == Reason::otherPeer) spendTransmitKey(intfId);
  if (reason == Reason::none || reason == Reason::spentKey) bindKeys(intfId);
  if (reason != this->reason(intfId)) reasonIs(intfId, reason);
}

void TransmitHold::spend(Lumo::IntfId intfId, Macsec::Sak const& sak) {
  if (auto const id = SakId::of(sak)) history_.spend(intfId, *id);
}

void TransmitHold::askForKeys(Lumo::IntfId intfId) {
  std::vector<SakId> keys;
  auto const ask = [&](Macsec::Sak const& sak) {
    if (auto const id = SakId::of(sak)) keys.push_back(*id);
  };
  if (auto const cp = ports_.status()->cpStatus(intfId)) {
    ask(cp->txSak());
    for (auto const& entry : cp->rxSak()) ask(*cp->rxSak(entry.fwkKey()));
  }
  history_.askedIs(intfId, keys);
}

// From the moment in which it is asked for, so that hardware that is late doesn't send with it
// under the SSCI that the peer had before it came under another SCI. The SSCIs have to be those of
// the present peer.
void TransmitHold::bindKeys(Lumo::IntfId intfId) {
  auto const cp = ports_.status()->cpStatus(intfId);
  auto const ssci = cp ? ssciNumber(cp->mySsci()) : std::nullopt;
  if (!ssci) return;
  for (auto const& entry : cp->rxSak()) {
    if (auto const id = SakId::of(*cp->rxSak(entry.fwkKey())))
      history_.bindSsci(intfId, *id, *ssci);
  }
}

// The peer may have the SSCI under which it is asked for. Who the peer is may be forgotten before
// the key is, as when the port ends.
void TransmitHold::spendTransmitKey(Lumo::IntfId intfId) {
  spend(intfId, ports_.status()->cpStatus(intfId)->txSak());
}

// All three have these keys, and send with them under an SSCI that isn't one's own alone. A
// follower may have got a key meanwhile that the key server has made for two: who has left ages out
// at the one before he does at the other. That key isn't asked for to be sent with before this end
// has looked at the age of its peers again, and told that it receives with it.
void TransmitHold::spendKeys(Lumo::IntfId intfId) {
  auto const cp = ports_.status()->cpStatus(intfId);
  auto const principal = principalOf(*ports_.status()->portStatus(intfId));
  spendTransmitKey(intfId);
  if (!principal->electedSelf()) return;
  for (auto const& entry : cp->rxSak()) spend(intfId, *cp->rxSak(entry.fwkKey()));
  spend(intfId, principal->distSak());
}

// Who hears of it may change it again.
void TransmitHold::reasonIs(Lumo::IntfId intfId, Reason reason) {
  if (reason == Reason::none) {
    held_.erase(intfId);
  } else {
    held_[intfId] = reason;
  }
  tell(intfId, reason);
  if (this->reason(intfId) != reason) return;
  if (reason == Reason::none) {
    input_->forwardingModelInputDel(intfId);
  } else {
    input_->forwardingModelInputIs(intfId, Interface::intfForwardingModelUnauthorized());
  }
}

void TransmitHold::tell(Lumo::IntfId intfId, Reason reason) {
  switch (reason) {
    case Reason::none:
      return Vesk::log(MACSECD_SENDS_AGAIN, intfId);
    case Reason::tooManyMembers:
      return Vesk::log(MACSECD_TOO_MANY_MEMBERS, intfId);
    case Reason::otherPeer:
      return Vesk::log(MACSECD_OTHER_PEER, intfId);
    case Reason::spentKey:
      timer_->timeMinIs(Vesk::now());
      return Vesk::log(MACSECD_KEY_SPENT, intfId,
                       sakText(ports_.status()->cpStatus(intfId)->txSak()));
  }
}

void TransmitHold::handleTime() {
  bool isWaiting = false;
  for (auto const& [intfId, reason] : std::map(held_)) {
    if (reason != Reason::spentKey) continue;
    renewKey(intfId);
    isWaiting = true;
  }
  if (isWaiting) timer_->timeMinIs(Vesk::now() + Limits::kRenewal);
}

// The guard of the key server holds a key that is wanted back until it expires. One that has
// expired before is let expire once more.
void TransmitHold::renewKey(Lumo::IntfId intfId) {
  auto const keyServerSm = keyServerOf_(intfId);
  auto const actor = keyServerSm ? keyServerSm->mkaActorStatus() : nullptr;
  if (!actor || !actor->electedSelf() || actor->livePeer().empty()) return;
  auto const sak = SakId::of(actor->distSak());
  if (sak && !history_.isSpent(intfId, *sak)) return;
  actor->newSakIs(true);
  if (!keyServerSm->mkaPeriodicTimer().isArmed()) keyServerSm->handleMkaLifetimeTimerExpiry();
}

}  // namespace Macsecd
