#include "platform/EthIntfStatus.h"

namespace Interface {

Vesk::Ptr<EthIntfStatus> EthIntfStatusDir::intfStatusIs(Lumo::IntfId key,
                                                        Lumo::EthAddr const& ethAddr,
                                                        uint16_t portNumber) {
  if (auto* member = intfStatus_.find(key)) {
    Vesk::requireSameParameter(member->name(), "ethAddr", ethAddr, member->ethAddr());
    Vesk::requireSameParameter(member->name(), "portNumber", portNumber, member->portNumber());
  }
  return memberIs<kIntfStatus>(intfStatus_, key,
                               [&] { return newIntfStatus(key, ethAddr, portNumber); });
}

Vesk::Ptr<EthIntfStatus> EthIntfStatusDir::newIntfStatus(Lumo::IntfId key,
                                                         Lumo::EthAddr const& ethAddr,
                                                         uint16_t portNumber) {
  return Vesk::make<EthIntfStatus>(key, ethAddr, portNumber);
}

Vesk::Ptr<EthIntfStatus> EthIntfStatusDir::intfStatusDel(Lumo::IntfId key) {
  return memberDel<kIntfStatus>(intfStatus_, key);
}

void EthIntfStatusDir::intfStatusDelAll() { memberDelAll<kIntfStatus>(intfStatus_); }

void EthIntfStatusDir::intfStatusNotify(Lumo::IntfId key) { tellKey<kIntfStatus>(key); }

}  // namespace Interface
