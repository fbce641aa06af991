#include "host/watch/PortChanges.h"

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
  void onPeerSsci() override { changed(); }
  void onRxSak(Macsec::AssociationNumber const&) override { changed(); }
  void onRxSakImmediate() override { changed(); }
  void onLatestSakContext() override { owner().stepped(fwkKey()); }
  void onOldSakContext() override { owner().stepped(fwkKey()); }
  void changed() { owner().changed(fwkKey()); }
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
  void onNewSak() override { stepped(); }
  void onPotentialPeer(Vesk::String8 const&) override { stepped(); }
  void onPotentialPeerImmediate() override { stepped(); }
  void changed();
  void stepped();
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
  void changed() { owner().changed(fwkKey()); }
  void stepped() { owner().stepped(fwkKey()); }
  auto nested() { return std::tie(actors_); }

 private:
  Vesk::NestedReactors<ActorStatusReactor, Vesk::String8> actors_;
};

void PortChanges::ActorStatusReactor::changed() { owner().changed(); }
void PortChanges::ActorStatusReactor::stepped() { owner().stepped(); }

PortChanges::StatusReactor::StatusReactor(PortChanges& owner, Vesk::Ptr<Status const> status)
    : Reactor(owner, std::move(status)) {
  cpStatus_.followAll(owner, notifier()->cpStatus());
  portStatus_.followAll(owner, notifier()->portStatus());
}

void PortChanges::StatusReactor::onCpStatus(Lumo::IntfId const& intfId) {
  cpStatus_.follow(owner(), notifier()->cpStatus(), intfId);
  owner().changed(intfId);
}

void PortChanges::StatusReactor::onPortStatus(Lumo::IntfId const& intfId) {
  portStatus_.follow(owner(), notifier()->portStatus(), intfId);
  owner().changed(intfId);
}

PortChanges::PortChanges(Vesk::Ptr<Status const> status)
    : status_(Vesk::make<StatusReactor>(*this, std::move(status))) {
  status_->hasNotificationActiveIs(true);
}

void PortChanges::end() { Vesk::endReactors(status_); }

Vesk::Ptr<Status const> const& PortChanges::status() const { return status_->notifier(); }

std::vector<Lumo::IntfId> PortChanges::ports() const {
  std::vector<Lumo::IntfId> ports;
  for (CpStatus& member : status()->cpStatus()) ports.push_back(member.intfId());
  return ports;
}

// By place: who is told may bring another listener.
void PortChanges::changed(Lumo::IntfId intfId) {
  for (size_t i = 0; i < listeners_.size(); ++i) listeners_[i]->portChanged(intfId);
}

void PortChanges::stepped(Lumo::IntfId intfId) {
  for (size_t i = 0; i < listeners_.size(); ++i) listeners_[i]->portStepped(intfId);
}

}  // namespace Macsecd
