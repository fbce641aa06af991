#pragma once

#include "engine/MkaSm.h"
#include "runtime/NestedReactors.h"

namespace Macsec {

struct MkaSm::StatusReactor final : Vesk::Reactor<Status, MkaSm, StatusReactor> {
  using Reactor::Reactor;
  void onIntfStatus(Lumo::IntfId const& intfId) override { owner().handleIntfStatus(intfId); }
  void onIntfStatusImmediate() override { owner().handleIntfStatus(); }
};

struct MkaSm::HwStatusReactor final
    : Vesk::Reactor<MacSecIntfStatusPtrDir const, MkaSm, HwStatusReactor> {
  using Reactor::Reactor;
  void onStatus(Lumo::IntfId const& intfId) override { owner().handleHwStatus(intfId); }
};

struct MkaSm::EthIntfStatusDirReactor final
    : Vesk::Reactor<Interface::EthIntfStatusDir const, MkaSm, EthIntfStatusDirReactor> {
  struct EthIntfStatusReactor;

  EthIntfStatusDirReactor(MkaSm& sm, Vesk::Ptr<Interface::EthIntfStatusDir const> dir);
  void onIntfStatus(Lumo::IntfId const& intfId) override;
  void onIntfStatusImmediate() override;
  auto nested() { return std::tie(ethIntfStatus_); }

 private:
  Vesk::NestedReactors<EthIntfStatusReactor, Lumo::IntfId> ethIntfStatus_;
};

struct MkaSm::EthIntfStatusDirReactor::EthIntfStatusReactor final
    : Vesk::Reactor<Interface::EthIntfStatus const, MkaSm, EthIntfStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onLinkStatus() override { handleLinkStatus(); }

  void handleLinkStatus();
  void handleEthIntfDelete();
};

}  // namespace Macsec
