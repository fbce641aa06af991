#pragma once

#include "controlled_port/ControlledPortSm.h"
#include "runtime/NestedReactors.h"

namespace Macsec {

struct ControlledPortSm::ActorStatusReactor final
    : Vesk::Reactor<MkaActorStatus const, ControlledPortSm, ActorStatusReactor> {
  using Reactor::Reactor;
  void onLivePeer(Vesk::String8 const& peer) override { owner().handleLivePeer(peer); }
  void onLivePeerImmediate() override { owner().handleLivePeer(); }
  void onDistSak() override { owner().handleDistSak(); }
  void onKeysLPN() override { owner().handleKeysLPN(); }
  void onSakTransmit() override { owner().handleSakTransmit(); }
};

struct ControlledPortSm::LatestKeyTxEnableTimerReactor final
    : Zorn::TimerReactor<ControlledPortSm, Zorn::TimerWheel::NotifieeConst> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().handleLatestKeyTxEnable(); }
};

struct ControlledPortSm::OldKeyRetirementTimerReactor final
    : Zorn::TimerReactor<ControlledPortSm, Zorn::TimerWheel::NotifieeConst> {
  using TimerReactor::TimerReactor;
  void onTime() override { owner().handleOldKeyRetirement(); }
};

// Follows the directory under the port's own interface. The reactor of another interface would only
// find that it isn't concerned: it is made when somebody asks for it.
struct ControlledPortSm::HwStatusReactor final
    : Vesk::Reactor<MacSecIntfStatusPtrDir const, ControlledPortSm, HwStatusReactor> {
  struct MacsecIntfStatusReactor;

  HwStatusReactor(ControlledPortSm& sm, Vesk::Ptr<MacSecIntfStatusPtrDir const> dir);
  void onStatus(Lumo::IntfId const& intfId) override;
  void onStatusImmediate() override;
  /// The reactor of this interface, made if the directory has the interface; else null.
  Vesk::Ptr<MacsecIntfStatusReactor> macsecIntfStatusReactor(Lumo::IntfId intfId);
  /// Throws `Vesk::RangeException` for a null entry.
  void macsecIntfStatusIs(Vesk::Ptr<MacSecIntfStatus const> const& member);
  size_t followed() const { return macsecIntfStatus_.members(); }
  auto nested() { return std::tie(macsecIntfStatus_); }

 private:
  bool isFollowed(Lumo::IntfId intfId) const;
  void followAll();

  Vesk::NestedReactors<MacsecIntfStatusReactor, Lumo::IntfId> macsecIntfStatus_;
};

struct ControlledPortSm::HwStatusReactor::MacsecIntfStatusReactor final
    : Vesk::Reactor<MacSecIntfStatus const, ControlledPortSm, MacsecIntfStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onTxSaStatus() override { handleTxSaStatus(); }
  void onRxSaStatus(AssociationNumber const& an) override { handleRxSaStatus(an); }

  void handleRxSaStatus(AssociationNumber an);
  void handleTxSaStatus();

 private:
  bool concernsOwner() const;
  void takeTransmitUp(SakContext latest);
};

}  // namespace Macsec
