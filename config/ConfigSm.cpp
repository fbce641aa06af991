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
  followProfiles();
  handleEapKeyStatus();
  handleInitialized();
}

ConfigSm::~ConfigSm() = default;

void ConfigSm::end() {
  Vesk::endReactors(config_, status_, eapKeyStatus_, ethIntfStatusDir_);
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

void ConfigSm::followProfiles() {
  profile_.followAll(*this, config()->profile(), &ProfileReactor::handleDel);
}

void ConfigSm::ConfigReactor::onProfile(Vesk::Name const& name) {
  owner().profile_.follow(owner(), notifier()->profile(), name, &ProfileReactor::handleDel);
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
  onIntfStatusImmediate();
}

void ConfigSm::EthIntfStatusDirReactor::onIntfStatus(Lumo::IntfId const& intfId) {
  ethIntfStatus_.follow(owner(), notifier()->intfStatus(), intfId);
}

void ConfigSm::EthIntfStatusDirReactor::onIntfStatusImmediate() {
  ethIntfStatus_.followAll(owner(), notifier()->intfStatus());
}

}  // namespace Macsec
