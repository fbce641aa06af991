#pragma once

#include <cstdint>

#include "model/PeerListSet.h"
#include "runtime/Pkt.h"
#include "runtime/PtrInterface.h"

namespace Macsec {

/// Points at the head of a peer list in a packet, at the position where the packet stood when the
/// wrapper was made. Changes nothing by itself; its attributes are the fields of the overlay.
class PeerListSetWrapper final : public Vesk::PtrInterface {
 public:
  explicit PeerListSetWrapper(Vesk::Ptr<Lumo::Pkt> pkt);
  static Vesk::Ptr<PeerListSetWrapper> PeerListSetWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt);

  Vesk::Ptr<Lumo::Pkt> const& pkt() const { return pkt_; }
  PeerListSet* peerListSetPkt() const { return peerListSetPkt_; }
  /// Sets the overlay pointer to the packet's current position.
  void handlePkt();

  uint8_t parameterSetType() const { return peerListSetPkt_->parameterSetType(); }
  void parameterSetTypeIs(uint8_t value) { peerListSetPkt_->parameterSetTypeIs(value); }
  uint8_t reserved() const { return peerListSetPkt_->reserved(); }
  void reservedIs(uint8_t value) { peerListSetPkt_->reservedIs(value); }
  uint16_t parameterSetBodyLength() const { return peerListSetPkt_->parameterSetBodyLength(); }
  void parameterSetBodyLengthIs(uint16_t value) {
    peerListSetPkt_->parameterSetBodyLengthIs(value);
  }

 private:
  Vesk::Ptr<Lumo::Pkt> pkt_;
  PeerListSet* peerListSetPkt_ = nullptr;
};

Vesk::Ptr<PeerListSetWrapper> peerListSetWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt);

}  // namespace Macsec
