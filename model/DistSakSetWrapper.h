#pragma once

#include <cstdint>

#include "model/DistSakSet.h"
#include "runtime/Pkt.h"
#include "runtime/PtrInterface.h"

namespace Macsec {

/// Points at the head of a distributed SAK in a packet, at the position where the packet stood when
/// the wrapper was made. Changes nothing by itself; its attributes are the fields of the overlay.
class DistSakSetWrapper final : public Vesk::PtrInterface {
 public:
  explicit DistSakSetWrapper(Vesk::Ptr<Lumo::Pkt> pkt);
  static Vesk::Ptr<DistSakSetWrapper> DistSakSetWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt);

  Vesk::Ptr<Lumo::Pkt> const& pkt() const { return pkt_; }
  DistSakSet* distSakSetPkt() const { return distSakSetPkt_; }
  /// Sets the overlay pointer to the packet's current position.
  void handlePkt();

  uint8_t parameterSetType() const { return distSakSetPkt_->parameterSetType(); }
  void parameterSetTypeIs(uint8_t value) { distSakSetPkt_->parameterSetTypeIs(value); }
  uint8_t distributedAN() const { return distSakSetPkt_->distributedAN(); }
  void distributedANIs(uint8_t value) { distSakSetPkt_->distributedANIs(value); }
  uint8_t confidentialityOffset() const { return distSakSetPkt_->confidentialityOffset(); }
  void confidentialityOffsetIs(uint8_t value) { distSakSetPkt_->confidentialityOffsetIs(value); }
  uint16_t parameterSetBodyLength() const { return distSakSetPkt_->parameterSetBodyLength(); }
  void parameterSetBodyLengthIs(uint16_t value) { distSakSetPkt_->parameterSetBodyLengthIs(value); }
  Lumo::NetU32 keyNumber() const { return distSakSetPkt_->keyNumber(); }
  void keyNumberIs(Lumo::NetU32 value) { distSakSetPkt_->keyNumberIs(value); }
  Lumo::NetU64 cipherSuite() const { return distSakSetPkt_->cipherSuite(); }
  void cipherSuiteIs(Lumo::NetU64 value) { distSakSetPkt_->cipherSuiteIs(value); }

 private:
  Vesk::Ptr<Lumo::Pkt> pkt_;
  DistSakSet* distSakSetPkt_ = nullptr;
};

Vesk::Ptr<DistSakSetWrapper> distSakSetWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt);

}  // namespace Macsec
