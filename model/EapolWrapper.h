#pragma once

#include <cstdint>

#include "model/Eapol.h"
#include "runtime/Pkt.h"
#include "runtime/PtrInterface.h"

namespace Macsec {

/// Points at the Ethernet and EAPOL headers in a packet, at the position where the packet stood
/// when the wrapper was made. Changes nothing by itself; its attributes are the fields of the
/// overlay.
class EapolWrapper final : public Vesk::PtrInterface {
 public:
  explicit EapolWrapper(Vesk::Ptr<Lumo::Pkt> pkt);
  static Vesk::Ptr<EapolWrapper> EapolWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt);

  Vesk::Ptr<Lumo::Pkt> const& pkt() const { return pkt_; }
  Eapol* eapolPkt() const { return eapolPkt_; }
  /// Sets the overlay pointer to the packet's current position.
  void handlePkt();

  Lumo::EthAddr const& dst() const { return eapolPkt_->dst(); }
  void dstIs(Lumo::EthAddr const& value) { eapolPkt_->dstIs(value); }
  Lumo::EthAddr const& src() const { return eapolPkt_->src(); }
  void srcIs(Lumo::EthAddr const& value) { eapolPkt_->srcIs(value); }
  uint16_t ethType() const { return eapolPkt_->ethType(); }
  void ethTypeIs(uint16_t value) { eapolPkt_->ethTypeIs(value); }
  uint8_t version() const { return eapolPkt_->version(); }
  void versionIs(uint8_t value) { eapolPkt_->versionIs(value); }
  uint8_t eapolType() const { return eapolPkt_->eapolType(); }
  void eapolTypeIs(uint8_t value) { eapolPkt_->eapolTypeIs(value); }
  void eapolTypeIs(EapolType type) { eapolPkt_->eapolTypeIs(type); }
  uint16_t bodyLen() const { return eapolPkt_->bodyLen(); }
  void bodyLenIs(uint16_t value) { eapolPkt_->bodyLenIs(value); }

 private:
  Vesk::Ptr<Lumo::Pkt> pkt_;
  Eapol* eapolPkt_ = nullptr;
};

Vesk::Ptr<EapolWrapper> eapolWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt);

}  // namespace Macsec
