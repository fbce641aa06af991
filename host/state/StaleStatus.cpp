#include "host/state/StaleStatus.h"

#include "runtime/Trace.h"

namespace Macsecd {

namespace {

Vesk::TraceHandle traceHandle("Macsecd::Host");

void dropPort(Macsec::Status& status, Lumo::IntfId intfId) {
  status.portStatusDel(intfId);
  status.cpStatusDel(intfId);
}

Vesk::Ptr<Macsec::Profile> profileOf(Macsec::Config const& config, Lumo::IntfId intfId) {
  auto const intfConfig = config.intfConfig(intfId);
  return intfConfig ? config.profile(intfConfig->profileName()) : nullptr;
}

bool hasDerivedKey(Macsec::IntfStatus const& intfStatus) {
  return intfStatus.key() != Macsec::Cak() &&
         intfStatus.dot1xType() != Macsec::IntfStatus::dot1xTypeDefault;
}

bool fallbackGoesOn(Macsec::Status const& status, Macsec::Profile const& profile,
                    Lumo::IntfId intfId, bool elects) {
  auto const port = status.portStatus(intfId);
  auto const actor = port ? port->actorStatus(profile.defaultKey().ckn()) : nullptr;
  return actor && actor->defaultActor() && !actor->livePeer().empty() &&
         (actor->principal() || elects);
}

bool isInUseWithoutKey(Macsec::Status const& status, Macsec::Profile const& profile,
                       Lumo::IntfId intfId) {
  auto const cp = status.cpStatus(intfId);
  return profile.defaultKey() == Macsec::Cak() && cp && cp->controlledPortEnabled();
}

void beginAnew(Macsec::Profile& profile, Macsec::Status& status, Lumo::IntfId intfId) {
  status.intfStatusDel(intfId);
  dropPort(status, intfId);
  profile.intfDel(intfId);
  profile.intfIs(intfId, true);
}

bool isStale(Macsec::IntfStatus const& intfStatus, Macsec::Config const& config) {
  auto const profile = profileOf(config, intfStatus.intfId());
  return profile && intfStatus.macsecParams() !=
                        Macsec::MacsecParams(profile->cipherSuite(), profile->includeSci());
}

}  // namespace

void dropPorts(Macsec::Status& status) {
  status.portStatusDelAll();
  status.cpStatusDelAll();
}

void dropMovedPorts(Interface::EthIntfStatusDir const& dir, Macsec::Status& status) {
  for (auto i = status.portStatus().iterator(); i; ++i) {
    Lumo::IntfId const intfId = i->intfId();
    auto const interface = dir.intfStatus(intfId);
    if (!interface) continue;
    if (i->mySci() == Macsec::Sci(interface->ethAddr(), interface->portNumber())) continue;
    VESK_TRACE(3, ": Taking away the port of a former SCI on ", intfId);
    dropPort(status, intfId);
  }
}

void dropConfiguredKeys(Macsec::Config& config, Macsec::Status& status, bool elects) {
  for (auto i = status.intfStatus().iterator(); i; ++i) {
    auto const profile = profileOf(config, i->intfId());
    if (!profile || !profile->dot1xEnabled() || hasDerivedKey(*i)) continue;
    if (i->key() != Macsec::Cak() && fallbackGoesOn(status, *profile, i->intfId(), elects)) {
      VESK_TRACE(3, ": Taking away the configured key of ", i->intfId());
      i->keyIs(Macsec::Cak());
    } else if (i->key() != Macsec::Cak() || isInUseWithoutKey(status, *profile, i->intfId())) {
      VESK_TRACE(3, ": Beginning anew without the configured key on ", i->intfId());
      beginAnew(*profile, status, i->intfId());
    }
  }
}

void dropStalePorts(Macsec::Status& status) {
  for (auto i = status.cpStatus().iterator(); i; ++i) {
    Lumo::IntfId const intfId = i->intfId();
    auto const intfStatus = status.intfStatus(intfId);
    if (!intfStatus || intfStatus->macsecParams() == i->macsecParams()) continue;
    VESK_TRACE(3, ": Taking away the port of former parameters on ", intfId);
    dropPort(status, intfId);
  }
}

void dropStaleInterfaces(Macsec::Config const& config, Macsec::Status& status) {
  for (auto i = status.intfStatus().iterator(); i; ++i) {
    Lumo::IntfId const intfId = i->intfId();
    if (!isStale(*i, config)) continue;
    VESK_TRACE(3, ": Taking away the interface of former parameters ", intfId);
    status.intfStatusDel(intfId);
    dropPort(status, intfId);
  }
}

}  // namespace Macsecd
