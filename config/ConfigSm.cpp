#include "config/ConfigSm.h"

#include "config/ConfigSmReactors.h"
#include "platform/SameKey.h"
#include "runtime/Trace.h"

// Construction, and the repair of what a former run left.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::Config");

}  // namespace

bool keysDiffer(Cak const& a, Cak const& b) {
  return a.ckn() != b.ckn() || !isSameKey(a.cak(), b.cak());
}

ConfigSm::ConfigSm(Vesk::Ptr<Config const> config, Vesk::Ptr<Status> status,
                   Vesk::Ptr<Dot1x::EapKeyStatus const> eapKeyStatus,
                   Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                   Vesk::Ptr<Brine::MessageCounters> brineCounters)
    : config_(Vesk::make<ConfigReactor>(*this, std::move(config))),
      status_(Vesk::make<StatusReactor>(*this, std::move(status))),
      eapKeyStatus_(Vesk::make<EapKeyStatusReactor>(*this, std::move(eapKeyStatus))),
      ethIntfStatusDir_(Vesk::make<EthIntfStatusDirReactor>(*this, std::move(ethIntfStatusDir))),
      brineCounters_(std::move(brineCounters)) {
  profilesFollowConfig();
  handleEapKeyStatus();
  handleInitialized();
}

ConfigSm::~ConfigSm() = default;

void ConfigSm::end() {
  Vesk::endReactors(config_, status_, eapKeyStatus_);
  ethIntfStatusDir_->retireAll();
  Vesk::endReactors(ethIntfStatusDir_);
  profile_.retireAll();
}

Vesk::Ptr<ConfigSm> ConfigSm::ConfigSmIs(
    Vesk::Ptr<Config const> config, Vesk::Ptr<Status> status,
    Vesk::Ptr<Dot1x::EapKeyStatus const> eapKeyStatus,
    Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
    Vesk::Ptr<Brine::MessageCounters> brineCounters) {
  return Vesk::makeActive<ConfigSm>(std::move(config), std::move(status), std::move(eapKeyStatus),
                                    std::move(ethIntfStatusDir), std::move(brineCounters));
}

Vesk::Ptr<ConfigSm> configSmFactory(Vesk::Ptr<Config const> config, Vesk::Ptr<Status> status,
                                    Vesk::Ptr<Dot1x::EapKeyStatus const> eapKeyStatus,
                                    Vesk::Ptr<Interface::EthIntfStatusDir const> ethIntfStatusDir,
                                    Vesk::Ptr<Brine::MessageCounters> brineCounters) {
  return ConfigSm::ConfigSmIs(std::move(config), std::move(status), std::move(eapKeyStatus),
                              std::move(ethIntfStatusDir), std::move(brineCounters));
}

void ConfigSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  Vesk::passNotificationActive(active, config_, status_, eapKeyStatus_, ethIntfStatusDir_);
  profile_.hasNotificationActiveIs(active);
}

Vesk::Ptr<Config const> const& ConfigSm::config() const { return config_->notifier(); }

void ConfigSm::configIs(Vesk::Ptr<Config const> config) { config_->notifierIs(std::move(config)); }

Vesk::Ptr<Status> const& ConfigSm::status() const { return status_->notifier(); }

void ConfigSm::statusIs(Vesk::Ptr<Status> status) { status_->notifierIs(std::move(status)); }

Vesk::Ptr<Dot1x::EapKeyStatus const> const& ConfigSm::eapKeyStatus() const {
  return eapKeyStatus_->notifier();
}

Vesk::Ptr<Interface::EthIntfStatusDir const> const& ConfigSm::ethIntfStatusDir() const {
  return ethIntfStatusDir_->notifier();
}

void ConfigSm::profileIs(Vesk::Ptr<Profile const> const& profile) {
  profile_.xIs(profile->name(), profile,
               [&] { return Vesk::make<ProfileReactor>(*this, profile); });
}

void ConfigSm::profileDel(Vesk::Name const& name) {
  profile_.xDel(name, [](ProfileReactor& profile) { profile.handleDel(); });
}

void ConfigSm::profilesFollowConfig() {
  for (Profile& profile : config()->profile()) profileIs(&profile);
  for (ProfileReactor& reactor : profile_.map()) {
    if (!config()->profile(reactor.fwkKey())) profileDel(reactor.fwkKey());
  }
}

void ConfigSm::ConfigReactor::onProfile(Vesk::Name const& name) {
  if (auto profile = notifier()->profile(name)) {
    owner().profileIs(profile);
  } else {
    owner().profileDel(name);
  }
}

void ConfigSm::handleInitialized() {
  VESK_TRACE(8, "");
  for (auto i = status()->intfStatus().iterator(); i; ++i) {
    if (!isStale(*i)) continue;
    VESK_TRACE(3, ": Deleting stale intfStatus for ", i->intfId());
    status()->intfStatusDel(i);
  }
  initialized_ = true;
  if (status()->macsecEnabled()) updateFipsStatus();
  handleDelayProtection();
}

// Judged by where the entry came from.
bool ConfigSm::isStale(IntfStatus const& intfStatus) const {
  auto const profile = config()->profile(intfStatus.profileName());
  if (!profile) return true;
  bool const* const isBound = profile->intf(intfStatus.intfId());
  if (!isBound || !*isBound) return true;
  return profile->key() == Cak() && !profile->dot1xEnabled();
}

ConfigSm::EthIntfStatusDirReactor::EthIntfStatusDirReactor(
    ConfigSm& sm, Vesk::Ptr<Interface::EthIntfStatusDir const> dir)
    : Reactor(sm, std::move(dir)) {
  for (auto& member : notifier()->intfStatus()) ethIntfStatusIs(&member);
}

void ConfigSm::EthIntfStatusDirReactor::hasNotificationActiveIs(bool active) {
  NotifieeConst::hasNotificationActiveIs(active);
  ethIntfStatus_.hasNotificationActiveIs(active);
}

void ConfigSm::EthIntfStatusDirReactor::onIntfStatus(Lumo::IntfId const& intfId) {
  if (auto member = notifier()->intfStatus(intfId)) {
    ethIntfStatusIs(member);
  } else {
    ethIntfStatus_.xDel(intfId);
  }
}

void ConfigSm::EthIntfStatusDirReactor::onIntfStatusImmediate() {
  for (auto& member : notifier()->intfStatus()) ethIntfStatusIs(&member);
  for (auto& nested : ethIntfStatus_.map()) {
    if (!notifier()->intfStatus(nested.fwkKey())) ethIntfStatus_.xDel(nested.fwkKey());
  }
}

void ConfigSm::EthIntfStatusDirReactor::ethIntfStatusIs(
    Vesk::Ptr<Interface::EthIntfStatus const> const& member) {
  ethIntfStatus_.xIs(member->intfId(), member,
                     [&] { return Vesk::make<EthIntfStatusReactor>(owner(), member); });
}

}  // namespace Macsec
