#include "codec/ActorFollower.h"

#include <algorithm>
#include <utility>

namespace Codec {

using Macsec::MkaActorStatus;
using Macsec::MkaPortStatus;
using Macsec::Status;

struct ActorFollower::ActorStatusReactor final
    : Vesk::Reactor<MkaActorStatus const, ActorFollower, ActorStatusReactor> {
  ActorStatusReactor(ActorFollower& follower, Vesk::Ptr<MkaActorStatus const> status, Port& port)
      : Reactor(follower, std::move(status)), port_(port), keys_(notifier()->ckn(), notifier()) {
    onIck();
    onKek();
    port_.actors.push_back(&keys_);
    takeUpPeers();
  }
  ~ActorStatusReactor() override { handleGone(); }

  Vesk::String8 const& fwkKey() const { return notifier()->ckn(); }
  void onIck() override { keys_.ickIs(notifier()->ick()); }
  void onKek() override { keys_.kekIs(notifier()->kek()); }

  // Whom a former process has heard counts as heard.
  void takeUpPeers() {
    for (Macsec::MkaPeer const& peer : notifier()->livePeer()) takeUp(peer);
    for (Macsec::MkaPeer const& peer : notifier()->potentialPeer()) takeUp(peer);
  }

  /// The keys go at once, whoever still holds this.
  void handleGone() {
    std::erase(port_.actors, &keys_);
    keys_.ickIs(Vesk::String8());
    keys_.kekIs(Vesk::String8());
  }

 private:
  // A member that was only listed by another one hasn't been heard.
  void takeUp(Macsec::MkaPeer const& peer) {
    auto const member = Macsec::MemberIdentifier::parsed(peer.baseInfo().msgId().view());
    if (!member || peer.baseInfo().msgId().empty()) return;
    port_.heard.heard(keys_.name(), *member, peer.baseInfo().msgNum());
  }

  Port& port_;
  ActorKeys keys_;
};

struct ActorFollower::PortStatusReactor final
    : Vesk::Reactor<MkaPortStatus const, ActorFollower, PortStatusReactor> {
  PortStatusReactor(ActorFollower& follower, Vesk::Ptr<MkaPortStatus const> status)
      : Reactor(follower, std::move(status)) {
    for (auto& actor : notifier()->actorStatus()) actorIs(&actor);
  }

  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onActorStatus(Vesk::String8 const& ckn) override {
    if (auto const actor = notifier()->actorStatus(ckn)) {
      actorIs(actor);
    } else {
      actors_.xDel(ckn, [](ActorStatusReactor& reactor) { reactor.handleGone(); });
    }
  }
  void retireAll() {
    for (ActorStatusReactor& reactor : actors_.map()) reactor.handleGone();
    actors_.retireAll();
  }

 private:
  void actorIs(Vesk::Ptr<MkaActorStatus const> const& actor) {
    actors_.xIs(actor->ckn(), actor, [&] {
      Port& port = owner().ports_.portIs(notifier()->intfId());
      return Vesk::make<ActorStatusReactor>(owner(), actor, port);
    });
  }

  Vesk::NestedReactors<ActorStatusReactor, Vesk::String8> actors_;
};

struct ActorFollower::StatusReactor final
    : Vesk::Reactor<Status const, ActorFollower, StatusReactor> {
  StatusReactor(ActorFollower& follower, Vesk::Ptr<Status const> status)
      : Reactor(follower, std::move(status)) {
    for (auto& port : notifier()->portStatus()) portIs(&port);
  }

  void onPortStatus(Lumo::IntfId const& intfId) override {
    if (auto const port = notifier()->portStatus(intfId)) {
      portIs(port);
      return;
    }
    ports_.xDel(intfId, [](PortStatusReactor& reactor) { reactor.retireAll(); });
    owner().handlers_.onDel(intfId);
  }
  void retireAll() {
    for (PortStatusReactor& reactor : ports_.map()) reactor.retireAll();
    ports_.retireAll();
  }

 private:
  void portIs(Vesk::Ptr<MkaPortStatus const> const& port) {
    owner().handlers_.onNew(port->intfId());
    ports_.xIs(port->intfId(), port, [&] { return Vesk::make<PortStatusReactor>(owner(), port); });
  }

  Vesk::NestedReactors<PortStatusReactor, Lumo::IntfId> ports_;
};

ActorFollower::ActorFollower(Vesk::Ptr<Status const> status, Ports& ports, PortHandlers handlers)
    : ports_(ports),
      handlers_(std::move(handlers)),
      statusReactor_(Vesk::make<StatusReactor>(*this, std::move(status))) {}

ActorFollower::~ActorFollower() {
  statusReactor_->retireAll();
  Vesk::retire(statusReactor_);
}

}  // namespace Codec
