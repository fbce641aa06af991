#include "host/watch/PortChanges.h"

#include <vector>

#include "runtime/Reactor.h"

namespace Macsecd {

using Macsec::CpStatus;
using Macsec::MkaActorStatus;
using Macsec::MkaPortStatus;
using Macsec::Status;

struct PortChanges::StatusReactor final : Vesk::Reactor<Status const, PortChanges, StatusReactor> {
  StatusReactor(PortChanges& owner, Vesk::Ptr<Status const> status);
  void onCpStatus(Lumo::IntfId const& intfId) override { changed(intfId); }
  void onPortStatus(Lumo::IntfId const& intfId) override { changed(intfId); }
  void changed(Lumo::IntfId intfId) {
    follow(intfId);
    owner().changed_(intfId);
  }
  void follow(Lumo::IntfId intfId);
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus;
  Vesk::NestedReactors<PortStatusReactor, Lumo::IntfId> portStatus;
};

struct PortChanges::CpStatusReactor final
    : Vesk::Reactor<CpStatus const, PortChanges, CpStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onControlledPortEnabled() override { changed(); }
  void onTxSak() override { changed(); }
  void onRxSak(Macsec::AssociationNumber const&) override { changed(); }
  void onRxSakImmediate() override { changed(); }
  void changed() { owner().changed_(fwkKey()); }
};

struct PortChanges::ActorStatusReactor final
    : Vesk::Reactor<MkaActorStatus const, PortChanges, ActorStatusReactor> {
  ActorStatusReactor(PortChanges& owner, Vesk::Ptr<MkaActorStatus const> actor, Lumo::IntfId intfId)
      : Reactor(owner, std::move(actor)), intfId(intfId) {}
  Vesk::String8 fwkKey() const { return notifier()->ckn(); }
  void onPrincipal() override { changed(); }
  void onDistSak() override { changed(); }
  void onSuccess() override { changed(); }
  void onLivePeer(Vesk::String8 const&) override { changed(); }
  void onLivePeerImmediate() override { changed(); }
  void changed() { owner().changed_(intfId); }
  Lumo::IntfId const intfId;
};

struct PortChanges::PortStatusReactor final
    : Vesk::Reactor<MkaPortStatus const, PortChanges, PortStatusReactor> {
  PortStatusReactor(PortChanges& owner, Vesk::Ptr<MkaPortStatus const> port)
      : Reactor(owner, std::move(port)) {
    for (MkaActorStatus& actor : notifier()->actorStatus()) follow(actor.ckn());
  }
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onActorStatus(Vesk::String8 const& ckn) override {
    follow(ckn);
    owner().changed_(fwkKey());
  }
  void follow(Vesk::String8 const& ckn) {
    Vesk::Ptr<MkaActorStatus const> const actor = notifier()->actorStatus(ckn);
    if (!actor) return actors.xDel(ckn);
    actors.xIs(ckn, actor,
               [&] { return Vesk::make<ActorStatusReactor>(owner(), actor, fwkKey()); });
  }
  Vesk::NestedReactors<ActorStatusReactor, Vesk::String8> actors;
};

PortChanges::StatusReactor::StatusReactor(PortChanges& owner, Vesk::Ptr<Status const> status)
    : Reactor(owner, std::move(status)) {
  for (CpStatus& member : notifier()->cpStatus()) follow(member.intfId());
  for (MkaPortStatus& member : notifier()->portStatus()) follow(member.intfId());
}

void PortChanges::StatusReactor::follow(Lumo::IntfId intfId) {
  if (Vesk::Ptr<CpStatus const> const cp = notifier()->cpStatus(intfId)) {
    cpStatus.xIs(intfId, cp, [&] { return Vesk::make<CpStatusReactor>(owner(), cp); });
  } else {
    cpStatus.xDel(intfId);
  }
  if (Vesk::Ptr<MkaPortStatus const> const port = notifier()->portStatus(intfId)) {
    portStatus.xIs(intfId, port, [&] { return Vesk::make<PortStatusReactor>(owner(), port); });
  } else {
    portStatus.xDel(intfId, [](PortStatusReactor& gone) { gone.actors.retireAll(); });
  }
}

PortChanges::PortChanges(Vesk::Ptr<Status const> status, Changed changed)
    : changed_(std::move(changed)), status_(Vesk::make<StatusReactor>(*this, std::move(status))) {
  status_->hasNotificationActiveIs(true);
}

PortChanges::~PortChanges() {
  status_->cpStatus.retireAll();
  for (PortStatusReactor& port : status_->portStatus.map()) port.actors.retireAll();
  status_->portStatus.retireAll();
  Vesk::retire(status_);
}

Vesk::Ptr<Status const> const& PortChanges::status() const { return status_->notifier(); }

void PortChanges::begin() {
  std::vector<Lumo::IntfId> ports;
  for (CpStatus& member : status()->cpStatus()) ports.push_back(member.intfId());
  for (Lumo::IntfId const intfId : ports) changed_(intfId);
}

}  // namespace Macsecd
