#include "engine/MkaSmReactors.h"
#include "runtime/Trace.h"

// How ports follow the links of the Ethernet interfaces.

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec::MkaSm");

}  // namespace

MkaSm::EthIntfStatusDirReactor::EthIntfStatusDirReactor(
    MkaSm& sm, Vesk::Ptr<Interface::EthIntfStatusDir const> dir)
    : Reactor(sm, std::move(dir)) {
  onIntfStatusImmediate();
}

void MkaSm::EthIntfStatusDirReactor::onIntfStatus(Lumo::IntfId const& intfId) {
  ethIntfStatus_.follow(owner(), notifier()->intfStatus(), intfId,
                        &EthIntfStatusReactor::handleEthIntfDelete);
}

void MkaSm::EthIntfStatusDirReactor::onIntfStatusImmediate() {
  ethIntfStatus_.followAll(owner(), notifier()->intfStatus(),
                           &EthIntfStatusReactor::handleEthIntfDelete);
}

void MkaSm::EthIntfStatusDirReactor::EthIntfStatusReactor::handleLinkStatus() {
  Lumo::IntfId const intfId = fwkKey();
  MkaSm& sm = owner();
  VESK_TRACE(8, ": IntfId ", intfId);
  if (!sm.initialized_) {
    VESK_TRACE(3, ": MkaSm not initialized, bailing.");
    return;
  }
  if (!sm.status()->intfStatus(intfId)) return;
  if (notifier()->linkStatus() != Interface::linkUp) {
    VESK_TRACE(3, ": Intf ", intfId, " not up, cleaning up portSm.");
    sm.mkaPortSmDel(intfId);
    if (!sm.isLinkUp(intfId) || !sm.status()->intfStatus(intfId)) return;
  }
  VESK_TRACE(3, ": Intf ", intfId, " is back up. Creating portSm and other statuses.");
  ++sm.portsAskedFor_;
  if (!sm.status()->portStatus(intfId)) sm.status()->portStatusIs(intfId);
  if (!sm.isPortAskedFor(intfId)) return;
  if (!sm.status()->cpStatus(intfId)) {
    sm.status()->cpStatusIs(intfId, sm.status()->intfStatus(intfId)->macsecParams());
  }
  sm.updateSci(intfId);
  if (sm.mkaPortSm_.find(intfId) || !sm.isPortAskedFor(intfId) || !sm.isLinkUp(intfId)) return;
  sm.mkaPortSmIs(intfId, sm.status(), sm.pamManager_, sm.hwStatus(), sm.timerWheel_);
}

void MkaSm::EthIntfStatusDirReactor::EthIntfStatusReactor::handleEthIntfDelete() {
  Lumo::IntfId const intfId = fwkKey();
  VESK_TRACE(8, ": IntfId ", intfId);
  if (!owner().initialized_) {
    VESK_TRACE(3, ": MkaSm not initialized, bailing.");
    return;
  }
  if (owner().status()->intfStatus(intfId)) owner().createOrDeletePortSm(intfId, true);
}

}  // namespace Macsec
