#pragma once

#include <cstdint>

#include "model/BasicParameterSet.h"
#include "runtime/Pkt.h"
#include "runtime/PtrInterface.h"

namespace Macsec {

/// Points at the basic parameter set in a packet, at the position where the packet stood when the
/// wrapper was made. Changes nothing by itself; its attributes are the fields of the overlay.
class BasicParameterSetWrapper final : public Vesk::PtrInterface {
 public:
  explicit BasicParameterSetWrapper(Vesk::Ptr<Lumo::Pkt> pkt);
  static Vesk::Ptr<BasicParameterSetWrapper> BasicParameterSetWrapperIs(Vesk::Ptr<Lumo::Pkt> pkt);

  Vesk::Ptr<Lumo::Pkt> const& pkt() const { return pkt_; }
  BasicParameterSet* basicParameterSetPkt() const { return basicParameterSetPkt_; }
  /// Sets the overlay pointer to the packet's current position.
  void handlePkt();

  uint8_t version() const { return basicParameterSetPkt_->version(); }
  void versionIs(uint8_t value) { basicParameterSetPkt_->versionIs(value); }
  uint8_t keyServerPriority() const { return basicParameterSetPkt_->keyServerPriority(); }
  void keyServerPriorityIs(uint8_t value) { basicParameterSetPkt_->keyServerPriorityIs(value); }
  uint8_t keyServer() const { return basicParameterSetPkt_->keyServer(); }
  void keyServerIs(uint8_t value) { basicParameterSetPkt_->keyServerIs(value); }
  uint8_t macsecDesired() const { return basicParameterSetPkt_->macsecDesired(); }
  void macsecDesiredIs(uint8_t value) { basicParameterSetPkt_->macsecDesiredIs(value); }
  uint8_t macsecCapability() const { return basicParameterSetPkt_->macsecCapability(); }
  void macsecCapabilityIs(uint8_t value) { basicParameterSetPkt_->macsecCapabilityIs(value); }
  uint16_t parameterSetBodyLength() const {
    return basicParameterSetPkt_->parameterSetBodyLength();
  }
  void parameterSetBodyLengthIs(uint16_t value) {
    basicParameterSetPkt_->parameterSetBodyLengthIs(value);
  }
  Lumo::EthAddr const& addr() const { return basicParameterSetPkt_->sci().addr(); }
  void addrIs(Lumo::EthAddr const& value);
  Lumo::NetU16 portId() const { return basicParameterSetPkt_->sci().portId(); }
  void portIdIs(Lumo::NetU16 value);
  Lumo::NetU32 messageNumber() const { return basicParameterSetPkt_->messageNumber(); }
  void messageNumberIs(Lumo::NetU32 value) { basicParameterSetPkt_->messageNumberIs(value); }
  Lumo::NetU32 algorithmAgility() const { return basicParameterSetPkt_->algorithmAgility(); }
  void algorithmAgilityIs(Lumo::NetU32 value) { basicParameterSetPkt_->algorithmAgilityIs(value); }

 private:
  Vesk::Ptr<Lumo::Pkt> pkt_;
  BasicParameterSet* basicParameterSetPkt_ = nullptr;
};

Vesk::Ptr<BasicParameterSetWrapper> basicParameterSetWrapperFactory(Vesk::Ptr<Lumo::Pkt> pkt);

}  // namespace Macsec
