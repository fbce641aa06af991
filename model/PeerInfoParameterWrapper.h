#pragma once

#include <cstdint>

#include "model/PeerListSet.h"
#include "runtime/Pkt.h"
#include "runtime/PtrInterface.h"

namespace Macsec {

/// Points at one record of a peer list in a packet, at the position where the packet stood when the
/// wrapper was made. Changes nothing by itself; its attributes are the fields of the overlay.
class PeerInfoParameterWrapper final : public Vesk::PtrInterface {
 public:
  explicit PeerInfoParameterWrapper(Vesk::Ptr<Lumo::Pkt> pkt);
  static Vesk::Ptr<PeerInfoParameterWrapper> PeerInfoParameterWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt);

  Vesk::Ptr<Lumo::Pkt> const& pkt() const { return pkt_; }
  PeerInfoParameter* peerInfoParameterPkt() const { return peerInfoParameterPkt_; }
  /// Sets the overlay pointer to the packet's current position.
  void handlePkt();

  Lumo::NetU32 messageNumber() const { return peerInfoParameterPkt_->messageNumber(); }
  void messageNumberIs(Lumo::NetU32 value) { peerInfoParameterPkt_->messageNumberIs(value); }

 private:
  Vesk::Ptr<Lumo::Pkt> pkt_;
  PeerInfoParameter* peerInfoParameterPkt_ = nullptr;
};

Vesk::Ptr<PeerInfoParameterWrapper> peerInfoParameterWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt);

}  // namespace Macsec
