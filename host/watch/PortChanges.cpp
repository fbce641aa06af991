#include "host/watch/PortChanges.h"

#include <vector>

#include "runtime/NestedReactors.h"
#include "runtime/Reactor.h"

namespace Macsecd {

using Macsec::CpStatus;
using Macsec::MkaActorStatus;
using Macsec::MkaPortStatus;
using Macsec::Status;

struct PortChanges::StatusReactor final : Vesk::Reactor<Status const, PortChanges, StatusReactor> {
  StatusReactor(PortChanges& owner, Vesk::Ptr<Status const> status);
  void onCpStatus(Lumo::IntfId const& intfId) override;
  void onPortStatus(Lumo::IntfId const& intfId) override;
  auto nested() { return std::tie(cpStatus_, portStatus_); }

 private:
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus_;
  Vesk::NestedReactors<PortStatusReactor, Lumo::IntfId> portStatus_;
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
    : Vesk::Reactor<MkaActorStatus const, PortStatusReactor, ActorStatusReactor> {
  using Reactor::Reactor;
  Vesk::String8 fwkKey() const { return notifier()->ckn(); }
  void onPrincipal() override { changed(); }
  void onDistSak() override { changed(); }
  void onSuccess() override { changed(); }
  void onLivePeer(Vesk::String8 const&) override { changed(); }
  void onLivePeerImmediate() override { changed(); }
  void changed();
};

struct PortChanges::PortStatusReactor final
    : Vesk::Reactor<MkaPortStatus const, PortChanges, PortStatusReactor> {
  PortStatusReactor(PortChanges& owner, Vesk::Ptr<MkaPortStatus const> port)
      : Reactor(owner, std::move(port)) {
    onActorStatusImmediate();
  }
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onActorStatus(Vesk::String8 const& ckn) override {
    actors_.follow(*this, notifier()->actorStatus(), ckn);
    changed();
  }
  void onActorStatusImmediate() override { actors_.followAll(*this, notifier()->actorStatus()); }
  void changed() { owner().changed_(fwkKey()); }
  auto nested() { return std::tie(actors_); }

 private:
  Vesk::NestedReactors<ActorStatusReactor, Vesk::String8> actors_;
};

void PortChanges::ActorStatusReactor::changed() { owner().changed(); }

PortChanges::StatusReactor::StatusReactor(PortChanges& owner, Vesk::Ptr<Status const> status)
    : Reactor(owner, std::move(status)) {
  cpStatus_.followAll(owner, notifier()->cpStatus());
  portStatus_.followAll(owner, notifier()->portStatus());
}

void PortChanges::StatusReactor::onCpStatus(Lumo::IntfId const& intfId) {
  cpStatus_.follow(owner(), notifier()->cpStatus(), intfId);
  owner().changed_(intfId);
}

void PortChanges::StatusReactor::onPortStatus(Lumo::IntfId const& intfId) {
  portStatus_.follow(owner(), notifier()->portStatus(), intfId);
  owner().changed_(intfId);
}

PortChanges::PortChanges(Vesk::Ptr<Status const> status, Changed changed)
    : changed_(std::move(changed)), status_(Vesk::make<StatusReactor>(*this, std::move(status))) {
  status_->hasNotificationActiveIs(true);
}

PortChanges::~PortChanges() { Vesk::retire(status_); }

Vesk::Ptr<Status const> const& PortChanges::status() const { return status_->notifier(); }

void PortChanges::begin() {
  std::vector<Lumo::IntfId> ports;
  for (CpStatus& member : status()->cpStatus()) ports.push_back(member.intfId());
  for (Lumo::IntfId const intfId : ports) changed_(intfId);
}

}  // namespace Macsecd
