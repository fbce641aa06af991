#include "host/StaleStatus.h"

#include "runtime/Trace.h"

namespace Macsecd {

namespace {

Vesk::TraceHandle traceHandle("Macsecd::Host");

void dropPort(Macsec::Status& status, Lumo::IntfId intfId) {
  status.portStatusDel(intfId);
  status.cpStatusDel(intfId);
}

bool isStale(Macsec::IntfStatus const& intfStatus, Macsec::Config const& config) {
  auto const intfConfig = config.intfConfig(intfStatus.intfId());
  auto const profile = intfConfig ? config.profile(intfConfig->profileName()) : nullptr;
  return profile && intfStatus.macsecParams() !=
                        Macsec::MacsecParams(profile->cipherSuite(), profile->includeSci());
}

}  // namespace

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
