#pragma once

#include "engine/MkaPortSm.h"
#include "runtime/NestedReactors.h"

namespace Macsec {

struct MkaPortSm::StatusReactor final : Vesk::Reactor<Status, MkaPortSm, StatusReactor> {
  using Reactor::Reactor;
};

struct MkaPortSm::PamManagerReactor final
    : Vesk::Reactor<MkaPamManager, MkaPortSm, PamManagerReactor> {
  using Reactor::Reactor;
};

struct MkaPortSm::HwStatusReactor final
    : Vesk::Reactor<MacSecIntfStatusPtrDir const, MkaPortSm, HwStatusReactor> {
  using Reactor::Reactor;
};

struct MkaPortSm::IntfStatusReactor final
    : Vesk::Reactor<IntfStatus const, MkaPortSm, IntfStatusReactor> {
  using Reactor::Reactor;
  void onKey() override { owner().handleKey(); }
  void onDefaultKey() override { owner().handleDefaultKey(); }
};

struct MkaPortSm::PortStatusReactor final
    : Vesk::Reactor<MkaPortStatus, MkaPortSm, PortStatusReactor> {
  struct ActorStatusReactor;

  PortStatusReactor(MkaPortSm& sm, Vesk::Ptr<MkaPortStatus> portStatus);
  void onActorStatus(Vesk::String8 const& ckn) override;
  void onActorStatusImmediate() override;
  auto nested() { return std::tie(actorStatus_); }

 private:
  Vesk::NestedReactors<ActorStatusReactor, Vesk::String8> actorStatus_;
};

struct MkaPortSm::PortStatusReactor::ActorStatusReactor final
    : Vesk::Reactor<MkaActorStatus, MkaPortSm, ActorStatusReactor> {
  using Reactor::Reactor;
  Vesk::String8 const& fwkKey() const { return notifier()->ckn(); }
  void onDistSak() override { handleDistSak(); }
  void onSuccess() override { handleActorSuccess(); }

  void handleDistSak();
  void handleActorSuccess();

 private:
  void handleSucceeded(MkaActorStatus& actor);
  void handleFailed(MkaActorStatus& actor);
  void advanceAn(AssociationNumber an);
  void markPrincipal(MkaActorStatus& actor);
};

struct MkaPortSm::DefaultActorTimerReactor final : Zorn::TimerReactor<MkaPortSm> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().handleDefaultKeyActivation(); }
};

struct MkaPortSm::ActorDeletionTimerReactor final : Zorn::TimerReactor<MkaPortSm> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().handleActorDeletion(); }
};

}  // namespace Macsec
