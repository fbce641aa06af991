#include "host/PeerLoss.h"

#include "host/PortActors.h"
#include "runtime/Log.h"

namespace Macsecd {

using Macsec::CpStatus;
using Macsec::MkaActorStatus;
using Macsec::MkaPortStatus;
using Macsec::Status;

namespace {

Vesk::LogHandle const MACSECD_CLOSED_WITHOUT_PEERS(
    "MACSECD_CLOSED_WITHOUT_PEERS", Vesk::LogSeverity::warning,
    "Interface %s is closed: all its peers are lost",
    "No peer has been heard for a life time, and the configuration has such a port closed "
    "('on-peer-loss: close'). It opens again with the first peer that is heard.",
    "Check the other end.", 0.0, 1.0);

Vesk::LogHandle const MACSECD_OPEN_WITH_PEERS("MACSECD_OPEN_WITH_PEERS", Vesk::LogSeverity::notice,
                                              "Interface %s is open again: a peer is there",
                                              "The port was closed for the loss of all its peers.",
                                              Vesk::NoActionRequired, 0.0, 1.0);

}  // namespace

struct PeerLoss::StatusReactor final : Vesk::Reactor<Status const, PeerLoss, StatusReactor> {
  StatusReactor(PeerLoss& owner, Vesk::Ptr<Status const> status);
  void onCpStatus(Lumo::IntfId const& intfId) override;
  void onPortStatus(Lumo::IntfId const& intfId) override;
  void follow(Lumo::IntfId intfId);
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus;
  Vesk::NestedReactors<PortStatusReactor, Lumo::IntfId> portStatus;
};

struct PeerLoss::CpStatusReactor final : Vesk::Reactor<CpStatus const, PeerLoss, CpStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onControlledPortEnabled() override { owner().look(fwkKey()); }
};

struct PeerLoss::ActorStatusReactor final
    : Vesk::Reactor<MkaActorStatus const, PeerLoss, ActorStatusReactor> {
  ActorStatusReactor(PeerLoss& owner, Vesk::Ptr<MkaActorStatus const> actor, Lumo::IntfId intfId)
      : Reactor(owner, std::move(actor)), intfId(intfId) {}
  Vesk::String8 fwkKey() const { return notifier()->ckn(); }
  void onLivePeer(Vesk::String8 const&) override { owner().look(intfId); }
  void onLivePeerImmediate() override { owner().look(intfId); }
  Lumo::IntfId const intfId;
};

struct PeerLoss::PortStatusReactor final
    : Vesk::Reactor<MkaPortStatus const, PeerLoss, PortStatusReactor> {
  PortStatusReactor(PeerLoss& owner, Vesk::Ptr<MkaPortStatus const> port)
      : Reactor(owner, std::move(port)) {
    for (MkaActorStatus& actor : notifier()->actorStatus()) follow(actor.ckn());
  }
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onActorStatus(Vesk::String8 const& ckn) override {
    follow(ckn);
    owner().look(fwkKey());
  }
  void follow(Vesk::String8 const& ckn) {
    Vesk::Ptr<MkaActorStatus const> const actor = notifier()->actorStatus(ckn);
    if (!actor) return actors.xDel(ckn);
    actors.xIs(ckn, actor,
               [&] { return Vesk::make<ActorStatusReactor>(owner(), actor, fwkKey()); });
  }
  Vesk::NestedReactors<ActorStatusReactor, Vesk::String8> actors;
};

PeerLoss::StatusReactor::StatusReactor(PeerLoss& owner, Vesk::Ptr<Status const> status)
    : Reactor(owner, std::move(status)) {
  for (CpStatus& member : notifier()->cpStatus()) follow(member.intfId());
  for (MkaPortStatus& member : notifier()->portStatus()) follow(member.intfId());
}

void PeerLoss::StatusReactor::follow(Lumo::IntfId intfId) {
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

void PeerLoss::StatusReactor::onCpStatus(Lumo::IntfId const& intfId) {
  follow(intfId);
  owner().look(intfId);
}

void PeerLoss::StatusReactor::onPortStatus(Lumo::IntfId const& intfId) {
  follow(intfId);
  owner().look(intfId);
}

PeerLoss::PeerLoss(Vesk::Ptr<Status const> status, Vesk::Ptr<Input> input)
    : input_(std::move(input)), status_(Vesk::make<StatusReactor>(*this, std::move(status))) {
  status_->hasNotificationActiveIs(true);
}

PeerLoss::~PeerLoss() {
  status_->cpStatus.retireAll();
  for (PortStatusReactor& port : status_->portStatus.map()) port.actors.retireAll();
  status_->portStatus.retireAll();
  Vesk::retire(status_);
}

void PeerLoss::closingAre(std::set<Lumo::IntfId> closing) {
  auto const former = std::exchange(closing_, std::move(closing));
  for (Lumo::IntfId const intfId : former) look(intfId);
  for (Lumo::IntfId const intfId : closing_) look(intfId);
}

bool PeerLoss::isLost(Lumo::IntfId intfId) const {
  if (!closing_.contains(intfId)) return false;
  auto const& tree = status_->notifier();
  auto const cpStatus = tree->cpStatus(intfId);
  if (!cpStatus || !cpStatus->controlledPortEnabled()) return false;
  auto const port = tree->portStatus(intfId);
  return !port || !hasLivePeer(*port);
}

void PeerLoss::look(Lumo::IntfId intfId) {
  bool const wasLost = input_->forwardingModelInput(intfId) != nullptr;
  bool const lost = isLost(intfId);
  if (lost == wasLost) return;
  if (lost) {
    Vesk::log(MACSECD_CLOSED_WITHOUT_PEERS, intfId);
    input_->forwardingModelInputIs(intfId, Interface::intfForwardingModelUnauthorized());
  } else {
    input_->forwardingModelInputDel(intfId);
    Vesk::log(MACSECD_OPEN_WITH_PEERS, intfId);
  }
}

}  // namespace Macsecd
