#pragma once

#include "config/ConfigSm.h"

namespace Macsec {

struct ConfigSm::ConfigReactor final : Vesk::Reactor<Config const, ConfigSm, ConfigReactor> {
  using Reactor::Reactor;
  void onProfile(Vesk::Name const& name) override;
  void onProfileImmediate() override { owner().followProfiles(); }
  void onFipsRestrictions() override { owner().handleFipsRestrictions(); }
  void onDelayProtection() override { owner().handleDelayProtection(); }
  void onClearMkaCounters() override { owner().handleClearMkaCounters(); }
};

struct ConfigSm::StatusReactor final : Vesk::Reactor<Status, ConfigSm, StatusReactor> {
  using Reactor::Reactor;
  void onMacsecEnabled() override { owner().maybeUpdateFipsStatus(); }
};

struct ConfigSm::EapKeyStatusReactor final
    : Vesk::Reactor<Dot1x::EapKeyStatus const, ConfigSm, EapKeyStatusReactor> {
  using Reactor::Reactor;
  void onKey(Lumo::IntfId const& intfId) override { owner().handleEapKeyStatus(intfId); }
  void onKeyImmediate() override { owner().handleEapKeyStatus(); }
};

struct ConfigSm::EthIntfStatusDirReactor final
    : Vesk::Reactor<Interface::EthIntfStatusDir const, ConfigSm, EthIntfStatusDirReactor> {
  struct EthIntfStatusReactor;

  EthIntfStatusDirReactor(ConfigSm& sm, Vesk::Ptr<Interface::EthIntfStatusDir const> dir);
  void onIntfStatus(Lumo::IntfId const& intfId) override;
  void onIntfStatusImmediate() override;
  auto nested() { return std::tie(ethIntfStatus_); }

 private:
  Vesk::NestedReactors<EthIntfStatusReactor, Lumo::IntfId> ethIntfStatus_;
};

struct ConfigSm::EthIntfStatusDirReactor::EthIntfStatusReactor final
    : Vesk::Reactor<Interface::EthIntfStatus const, ConfigSm, EthIntfStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onLinkStatus() override { handleLinkStatus(); }
  void handleLinkStatus();
};

struct ConfigSm::ProfileReactor final : Vesk::Reactor<Profile const, ConfigSm, ProfileReactor> {
  ProfileReactor(ConfigSm& sm, Vesk::Ptr<Profile const> profile);
  Vesk::Name const& fwkKey() const { return notifier()->name(); }

  void onIntf(Lumo::IntfId const& intfId) override { handleIntf(intfId); }
  void onIntfImmediate() override { handleIntf(); }
  void onKey() override { handleKeys(); }
  void onDefaultKey() override { handleKeys(); }
  void onKeyServerPriority() override { handleProfileAttrs(); }
  void onSessionReKeyPeriod() override { handleProfileAttrs(); }
  void onCipherSuite() override { handleCipherSuite(); }
  void onDot1xEnabled() override { handleIntf(); }
  void onIncludeSci() override { handleIncludeSci(); }
  void onGroupCak() override { handleProfileAttrs(); }

  void handleIntf(Lumo::IntfId intfId);
  void handleIntf();
  void handleKeys();
  void handleProfileAttrs();
  void handleCipherSuite();
  void handleIncludeSci();
  void handleDel();
  void updateIntf(IntfStatus& intfStatus);

 private:
  bool isWanted(Lumo::IntfId intfId) const;
  void recreateIntfs();
};

}  // namespace Macsec
