#include "model/MkaPamManager.h"

#include "runtime/Assert.h"
#include "runtime/Trace.h"

namespace Macsec {

namespace {

Vesk::TraceHandle traceHandle("Macsec");

}  // namespace

void MkaPamManager::handleRxMessageInfoInit() {
  VESK_TRACE(8, "");
  rxMessageInfoIs();
  VESK_ASSERT(rxMessageInfo_);
}

void MkaPamManager::handleTxMessageInfoInit() {
  VESK_TRACE(8, "");
  txMessageInfoIs();
  VESK_ASSERT(txMessageInfo_);
}

Vesk::Ptr<Intf> MkaPamManager::mkaIntfIs(Lumo::IntfId key) {
  return memberIs<kMkaIntf>(mkaIntf_, key, [&] { return newMkaIntf(key); });
}

Vesk::Ptr<Intf> MkaPamManager::newMkaIntf(Lumo::IntfId key) { return Vesk::make<Intf>(key); }

Vesk::Ptr<Intf> MkaPamManager::mkaIntfDel(Lumo::IntfId key) {
  return memberDel<kMkaIntf>(mkaIntf_, key);
}

void MkaPamManager::mkaIntfDelAll() { memberDelAll<kMkaIntf>(mkaIntf_); }

void MkaPamManager::mkaIntfNotify(Lumo::IntfId key) { tellKey<kMkaIntf>(key); }

Vesk::Ptr<MkaMessageInfo> MkaPamManager::rxMessageInfoIs() {
  if (rxMessageInfo_) return rxMessageInfo_.ptr();
  childIs<kRxMessageInfo>(rxMessageInfo_, Vesk::make<MkaMessageInfo>());
  return rxMessageInfo_.ptr();
}

Vesk::Ptr<MkaMessageInfo> MkaPamManager::rxMessageInfoDel() {
  Vesk::Ptr<MkaMessageInfo> gone = rxMessageInfo_.ptr();
  childIs<kRxMessageInfo>(rxMessageInfo_, Vesk::Ptr<MkaMessageInfo>());
  return gone;
}

Vesk::Ptr<MkaMessageInfo> MkaPamManager::txMessageInfoIs() {
  if (txMessageInfo_) return txMessageInfo_.ptr();
  childIs<kTxMessageInfo>(txMessageInfo_, Vesk::make<MkaMessageInfo>());
  return txMessageInfo_.ptr();
}

Vesk::Ptr<MkaMessageInfo> MkaPamManager::txMessageInfoDel() {
  Vesk::Ptr<MkaMessageInfo> gone = txMessageInfo_.ptr();
  childIs<kTxMessageInfo>(txMessageInfo_, Vesk::Ptr<MkaMessageInfo>());
  return gone;
}

Vesk::Ptr<MkaPamCounter> MkaPamManager::txPamCounterIs(Lumo::IntfId key) {
  return memberIs<kTxPamCounter>(txPamCounter_, key, [&] { return newTxPamCounter(key); });
}

Vesk::Ptr<MkaPamCounter> MkaPamManager::newTxPamCounter(Lumo::IntfId key) {
  return Vesk::make<MkaPamCounter>(key);
}

Vesk::Ptr<MkaPamCounter> MkaPamManager::txPamCounterDel(Lumo::IntfId key) {
  return memberDel<kTxPamCounter>(txPamCounter_, key);
}

void MkaPamManager::txPamCounterDelAll() { memberDelAll<kTxPamCounter>(txPamCounter_); }

void MkaPamManager::txPamCounterNotify(Lumo::IntfId key) { tellKey<kTxPamCounter>(key); }

Vesk::Ptr<MkaPamCounter> MkaPamManager::rxPamCounterIs(Lumo::IntfId key) {
  return memberIs<kRxPamCounter>(rxPamCounter_, key, [&] { return newRxPamCounter(key); });
}

Vesk::Ptr<MkaPamCounter> MkaPamManager::newRxPamCounter(Lumo::IntfId key) {
  return Vesk::make<MkaPamCounter>(key);
}

Vesk::Ptr<MkaPamCounter> MkaPamManager::rxPamCounterDel(Lumo::IntfId key) {
  return memberDel<kRxPamCounter>(rxPamCounter_, key);
}

void MkaPamManager::rxPamCounterDelAll() { memberDelAll<kRxPamCounter>(rxPamCounter_); }

void MkaPamManager::rxPamCounterNotify(Lumo::IntfId key) { tellKey<kRxPamCounter>(key); }

}  // namespace Macsec
