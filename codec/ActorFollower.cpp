#include "codec/ActorFollower.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "runtime/NestedReactors.h"

namespace Codec {

using Macsec::MkaActorStatus;
using Macsec::MkaPortStatus;
using Macsec::Status;

struct ActorFollower::ActorStatusReactor final
    : Vesk::Reactor<MkaActorStatus const, PortStatusReactor, ActorStatusReactor> {
  ActorStatusReactor(PortStatusReactor& port, Vesk::Ptr<MkaActorStatus const> status);

  Vesk::String8 const& fwkKey() const { return notifier()->ckn(); }
  void onIck() override { keys_->ickIs(notifier()->ick()); }
  void onKek() override { keys_->kekIs(notifier()->kek()); }

  // Whom a former process has heard counts as heard.
  void takeUpPeers() {
    for (Macsec::MkaPeer const& peer : notifier()->livePeer()) takeUp(peer);
    for (Macsec::MkaPeer const& peer : notifier()->potentialPeer()) takeUp(peer);
  }

  /// The keys go at once, whoever still holds this.
  void retire() {
    Reactor::retire();
    std::erase(port_.actors, keys_.get());
    keys_->ickIs(Vesk::String8());
    keys_->kekIs(Vesk::String8());
  }

 private:
  // A member that was only listed by another one hasn't been heard.
  void takeUp(Macsec::MkaPeer const& peer) {
    auto const member = Macsec::MemberIdentifier::parsed(peer.baseInfo().msgId().view());
    if (!member || peer.baseInfo().msgId().empty()) return;
    port_.heard.heard(keys_->name(), *member, peer.baseInfo().msgNum());
  }

  Port& port_;
  std::unique_ptr<ActorKeys> const keys_;
};

struct ActorFollower::PortStatusReactor final
    : Vesk::Reactor<MkaPortStatus const, ActorFollower, PortStatusReactor> {
  PortStatusReactor(ActorFollower& follower, Vesk::Ptr<MkaPortStatus const> status)
      : Reactor(follower, std::move(status)) {
    onActorStatusImmediate();
  }

  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onActorStatus(Vesk::String8 const& ckn) override {
    actors_.follow(*this, notifier()->actorStatus(), ckn);
  }
  void onActorStatusImmediate() override { actors_.followAll(*this, notifier()->actorStatus()); }
  auto nested() { return std::tie(actors_); }

 private:
  Vesk::NestedReactors<ActorStatusReactor, Vesk::String8> actors_;
};

ActorFollower::ActorStatusReactor::ActorStatusReactor(PortStatusReactor& port,
                                                      Vesk::Ptr<MkaActorStatus const> status)
    : Reactor(port, std::move(status)),
      port_(port.owner().ports_.memberIs(port.fwkKey(), port.fwkKey())),
      keys_(std::make_unique<ActorKeys>(notifier()->ckn(), notifier())) {
  onIck();
  onKek();
  port_.actors.push_back(keys_.get());
  takeUpPeers();
}

struct ActorFollower::StatusReactor final
    : Vesk::Reactor<Status const, ActorFollower, StatusReactor> {
  StatusReactor(ActorFollower& follower, Vesk::Ptr<Status const> status)
      : Reactor(follower, std::move(status)) {
    for (MkaPortStatus& port : notifier()->portStatus()) onPortStatus(port.intfId());
  }

  void onPortStatus(Lumo::IntfId const& intfId) override {
    bool const isHere = notifier()->portStatus().find(intfId) != nullptr;
    if (isHere) owner().handlers_.onNew(intfId);
    ports_.follow(owner(), notifier()->portStatus(), intfId);
    if (!isHere) owner().handlers_.onDel(intfId);
  }
  auto nested() { return std::tie(ports_); }

 private:
  Vesk::NestedReactors<PortStatusReactor, Lumo::IntfId> ports_;
};

ActorFollower::ActorFollower(Vesk::Ptr<Status const> status, Ports& ports, PortHandlers handlers)
    : ports_(ports),
      handlers_(std::move(handlers)),
      statusReactor_(Vesk::make<StatusReactor>(*this, std::move(status))) {}

ActorFollower::~ActorFollower() { Vesk::retire(statusReactor_); }

}  // namespace Codec
