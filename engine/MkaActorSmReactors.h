#pragma once

#include "engine/MkaActorSm.h"

namespace Macsec {

struct MkaActorSm::ActorStatusReactor final
    : Vesk::Reactor<MkaActorStatus, MkaActorSm, ActorStatusReactor> {
  using Reactor::Reactor;
  void onPrincipal() override { owner().handlePrincipalActor(); }
};

struct MkaActorSm::PamManagerReactor final
    : Vesk::Reactor<MkaPamManager, MkaActorSm, PamManagerReactor> {
  using Reactor::Reactor;
  void onRxMessageInfo() override { owner().rxMessageInfoReactorIs(notifier()->rxMessageInfo()); }
};

// Registered under the actor's interface: a message for another one doesn't get here.
struct MkaActorSm::RxMessageInfoReactor final
    : Vesk::Reactor<MkaMessageInfo, MkaActorSm, RxMessageInfoReactor> {
  static constexpr bool kIsHot = true;
  using Reactor::Reactor;
  void onCount() override { owner().handleRxMessage(); }
};

struct MkaActorSm::MkpduTimerReactor final : Zorn::TimerReactor<MkaActorSm> {
  static constexpr bool kIsHot = true;
  using TimerReactor::TimerReactor;
  void onTime() override { owner().handleMkpduTimerExpiry(); }
};

}  // namespace Macsec
