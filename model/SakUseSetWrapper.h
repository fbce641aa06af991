#pragma once

#include <cstdint>

#include "model/SakUseSet.h"
#include "runtime/Pkt.h"
#include "runtime/PtrInterface.h"

namespace Macsec {

/// Points at a SAK use set in a packet, at the position where the packet stood when the
/// wrapper was made. Changes nothing by itself; its attributes are the fields of the overlay.
class SakUseSetWrapper final : public Vesk::PtrInterface {
 public:
  explicit SakUseSetWrapper(Vesk::Ptr<Lumo::Pkt> pkt);
  static Vesk::Ptr<SakUseSetWrapper> SakUseSetWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt);

  Vesk::Ptr<Lumo::Pkt> const& pkt() const { return pkt_; }
  SakUseSet* sakUseSetPkt() const { return sakUseSetPkt_; }
  /// Sets the overlay pointer to the packet's current position.
  void handlePkt();

  uint8_t latestKeyAN() const { return sakUseSetPkt_->latestKeyAN(); }
  void latestKeyANIs(uint8_t value) { sakUseSetPkt_->latestKeyANIs(value); }
  uint8_t latestKeyTx() const { return sakUseSetPkt_->latestKeyTx(); }
  void latestKeyTxIs(uint8_t value) { sakUseSetPkt_->latestKeyTxIs(value); }
  uint8_t latestKeyRx() const { return sakUseSetPkt_->latestKeyRx(); }
  void latestKeyRxIs(uint8_t value) { sakUseSetPkt_->latestKeyRxIs(value); }
  uint8_t oldKeyAN() const { return sakUseSetPkt_->oldKeyAN(); }
  void oldKeyANIs(uint8_t value) { sakUseSetPkt_->oldKeyANIs(value); }
  uint8_t oldKeyTx() const { return sakUseSetPkt_->oldKeyTx(); }
  void oldKeyTxIs(uint8_t value) { sakUseSetPkt_->oldKeyTxIs(value); }
  uint8_t oldKeyRx() const { return sakUseSetPkt_->oldKeyRx(); }
  void oldKeyRxIs(uint8_t value) { sakUseSetPkt_->oldKeyRxIs(value); }
  uint8_t plainTx() const { return sakUseSetPkt_->plainTx(); }
  void plainTxIs(uint8_t value) { sakUseSetPkt_->plainTxIs(value); }
  uint8_t plainRx() const { return sakUseSetPkt_->plainRx(); }
  void plainRxIs(uint8_t value) { sakUseSetPkt_->plainRxIs(value); }
  uint8_t delayProtect() const { return sakUseSetPkt_->delayProtect(); }
  void delayProtectIs(uint8_t value) { sakUseSetPkt_->delayProtectIs(value); }
  uint16_t parameterSetBodyLength() const { return sakUseSetPkt_->parameterSetBodyLength(); }
  void parameterSetBodyLengthIs(uint16_t value) { sakUseSetPkt_->parameterSetBodyLengthIs(value); }
  Lumo::NetU32 latestKeyNumber() const { return sakUseSetPkt_->latestKeyNumber(); }
  void latestKeyNumberIs(Lumo::NetU32 value) { sakUseSetPkt_->latestKeyNumberIs(value); }
  Lumo::NetU32 llpn() const { return sakUseSetPkt_->llpn(); }
  void llpnIs(Lumo::NetU32 value) { sakUseSetPkt_->llpnIs(value); }
  Lumo::NetU32 oldKeyNumber() const { return sakUseSetPkt_->oldKeyNumber(); }
  void oldKeyNumberIs(Lumo::NetU32 value) { sakUseSetPkt_->oldKeyNumberIs(value); }
  Lumo::NetU32 olpn() const { return sakUseSetPkt_->olpn(); }
  void olpnIs(Lumo::NetU32 value) { sakUseSetPkt_->olpnIs(value); }

 private:
  Vesk::Ptr<Lumo::Pkt> pkt_;
  SakUseSet* sakUseSetPkt_ = nullptr;
};

Vesk::Ptr<SakUseSetWrapper> sakUseSetWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt);

}  // namespace Macsec
