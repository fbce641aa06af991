#include "config/ConfigSmReactors.h"
#include "runtime/Trace.h"

// How profiles become the status of interfaces.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::Config");

constexpr uint32_t kSecondsPerMinute = 60;

}  // namespace

ConfigSm::ProfileReactor::ProfileReactor(ConfigSm& sm, Vesk::Ptr<Profile const> profile)
    : Reactor(sm, std::move(profile)) {
  handleIntf();
}

// A fallback key alone doesn't make an interface wanted, and a profile that has been deleted inside
// one of these steps wants none.
bool ConfigSm::ProfileReactor::isWanted(Lumo::IntfId intfId) const {
  if (isMarkedForDeletion()) return false;
  bool const* const isBound = notifier()->intf(intfId);
  return isBound && *isBound && (notifier()->key() != Cak() || notifier()->dot1xEnabled());
}

void ConfigSm::ProfileReactor::handleIntf(Lumo::IntfId intfId) {
  VESK_TRACE(8, ": IntfId ", intfId);
  Profile const& profile = *notifier();
  Status& status = *owner().status();
  auto intfStatus = status.intfStatus(intfId);
  if (!isWanted(intfId)) {
    if (!intfStatus || intfStatus->profileName() != profile.name()) return;
    VESK_TRACE(3, ": Deleting intfStatus for ", intfId);
    status.intfStatusDel(intfId);
    return;
  }
  if (intfStatus) {
    VESK_TRACE(3, ": IntfStatus ", intfId, " already exists.");
  } else {
    VESK_TRACE(3, ": Creating an intfStatus for ", intfId);
    MacsecParams const params(profile.cipherSuite(), profile.includeSci());
    intfStatus = status.intfStatusIs(intfId, params);
  }
  VESK_TRACE(3, ": Updating intfStatus for ", intfId);
  updateIntf(*intfStatus);
}

void ConfigSm::ProfileReactor::handleIntf() {
  VESK_TRACE(8, "");
  for (auto& entry : notifier()->intf()) handleIntf(entry.fwkKey());
}

void ConfigSm::ProfileReactor::handleKeys() {
  VESK_TRACE(8, "");
  handleIntf();
}

void ConfigSm::ProfileReactor::handleProfileAttrs() {
  VESK_TRACE(8, "");
  for (auto& entry : notifier()->intf()) {
    auto const intfStatus = owner().status()->intfStatus(entry.fwkKey());
    if (!intfStatus) continue;
    VESK_TRACE(3, ": Updating intfStatus ", entry.fwkKey());
    updateIntf(*intfStatus);
  }
}

void ConfigSm::ProfileReactor::updateIntf(IntfStatus& intfStatus) {
  VESK_TRACE(8, ": IntfId ", intfStatus.intfId());
  Profile const& profile = *notifier();
  intfStatus.profileNameIs(profile.name());
  intfStatus.keyServerPriorityIs(profile.keyServerPriority());
  intfStatus.reKeyPeriodIs(profile.sessionReKeyPeriod());
  if (keysDiffer(intfStatus.defaultKey(), profile.defaultKey())) {
    intfStatus.defaultKeyIs(profile.defaultKey());
  }
  GroupCak const& groupCak = profile.groupCak();
  intfStatus.groupCakLifetimeIs(groupCak.enabled() ? groupCak.lifetime() * kSecondsPerMinute : 0);
  if (profile.dot1xEnabled()) {
    owner().handleEapKeyStatus(intfStatus.intfId());
    return;
  }
  intfStatus.dot1xTypeIs(IntfStatus::dot1xTypeDefault);
  if (keysDiffer(intfStatus.key(), profile.key())) intfStatus.keyIs(profile.key());
}

void ConfigSm::ProfileReactor::handleCipherSuite() {
  VESK_TRACE(8, " Updating Cipher");
  recreateIntfs();
}

void ConfigSm::ProfileReactor::handleIncludeSci() {
  VESK_TRACE(8, " Updating SCI Inclusion Flag ");
  recreateIntfs();
}

// What these settings become can't change on a live entry: it is destroyed and made anew.
void ConfigSm::ProfileReactor::recreateIntfs() {
  for (auto& entry : notifier()->intf()) {
    Lumo::IntfId const intfId = entry.fwkKey();
    owner().status()->intfStatusDel(intfId);
    handleIntf(intfId);
  }
}

// Driven by which profile the interfaces name, not by which interfaces the profile lists.
void ConfigSm::ProfileReactor::handleDel() {
  VESK_TRACE(8, "");
  for (IntfConfig& intfConfig : owner().config()->intfConfig()) {
    if (intfConfig.profileName() != notifier()->name()) continue;
    if (!owner().status()->intfStatus(intfConfig.intfId())) continue;
    VESK_TRACE(3, ": Deleting intfStatus for ", intfConfig.intfId());
    owner().status()->intfStatusDel(intfConfig.intfId());
  }
}

}  // namespace Macsec
