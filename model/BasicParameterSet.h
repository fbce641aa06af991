#pragma once

#include <cstddef>
#include <cstdint>

#include "model/MemberIdentifier.h"
#include "model/MkaPduParts.h"
#include "model/Overlay.h"
#include "runtime/EthAddr.h"
#include "runtime/NetValues.h"

namespace Macsec {

/// A secure channel identifier: the address of a system and the number of a port on it.
class SciParameterSet {
 public:
  Lumo::EthAddr const& addr() const { return addr_; }
  void addrIs(Lumo::EthAddr const& value) { addr_ = value; }
  Lumo::NetU16 portId() const { return portId_; }
  void portIdIs(Lumo::NetU16 value) { portId_ = value; }

  friend bool operator==(SciParameterSet const&, SciParameterSet const&) = default;

 private:
  static constexpr void checkLayout() {
    static_assert(offsetof(SciParameterSet, addr_) == 0);
    static_assert(offsetof(SciParameterSet, portId_) == 6);
  }

  Lumo::EthAddr addr_;
  Lumo::NetU16 portId_;
};

static_assert(isOverlay<SciParameterSet, 8>);

/// The basic parameter set; the name of the CAK follows it.
///
///      0 | version | keyServerPriority | basicParameterSetPart (2) |
///      4 | sci (8)                                                 |
///     12 | memberIdentifier (12), the sender's                     |
///     24 | messageNumber (4)                                       |
///     28 | algorithmAgility (4)                                    |
class BasicParameterSet {
 public:
  uint8_t version() const { return version_.value(); }
  void versionIs(uint8_t value) { version_.valueIs(value); }
  uint8_t keyServerPriority() const { return keyServerPriority_.value(); }
  void keyServerPriorityIs(uint8_t value) { keyServerPriority_.valueIs(value); }
  BasicParameterSetPart const& basicParameterSetPart() const { return basicParameterSetPart_; }
  void basicParameterSetPartIs(BasicParameterSetPart const& value) {
    basicParameterSetPart_ = value;
  }

  uint8_t keyServer() const { return basicParameterSetPart_.keyServer(); }
  void keyServerIs(uint8_t value) { basicParameterSetPart_.keyServerIs(value); }
  uint8_t macsecDesired() const { return basicParameterSetPart_.macsecDesired(); }
  void macsecDesiredIs(uint8_t value) { basicParameterSetPart_.macsecDesiredIs(value); }
  uint8_t macsecCapability() const { return basicParameterSetPart_.macsecCapability(); }
  void macsecCapabilityIs(uint8_t value) { basicParameterSetPart_.macsecCapabilityIs(value); }
  uint16_t parameterSetBodyLength() const {
    return basicParameterSetPart_.parameterSetBodyLength();
  }
  void parameterSetBodyLengthIs(uint16_t value) {
    basicParameterSetPart_.parameterSetBodyLengthIs(value);
  }

  SciParameterSet const& sci() const { return sci_; }
  void sciIs(SciParameterSet const& value) { sci_ = value; }
  MemberIdentifier const& memberIdentifier() const { return memberIdentifier_; }
  void memberIdentifierIs(MemberIdentifier const& value) { memberIdentifier_ = value; }
  Lumo::NetU32 messageNumber() const { return messageNumber_; }
  void messageNumberIs(Lumo::NetU32 value) { messageNumber_ = value; }
  Lumo::NetU32 algorithmAgility() const { return algorithmAgility_; }
  void algorithmAgilityIs(Lumo::NetU32 value) { algorithmAgility_ = value; }

 private:
  static constexpr void checkLayout() {
    static_assert(offsetof(BasicParameterSet, version_) == 0);
    static_assert(offsetof(BasicParameterSet, keyServerPriority_) == 1);
    static_assert(offsetof(BasicParameterSet, basicParameterSetPart_) == 2);
    static_assert(offsetof(BasicParameterSet, sci_) == 4);
    static_assert(offsetof(BasicParameterSet, memberIdentifier_) == 12);
    static_assert(offsetof(BasicParameterSet, messageNumber_) == 24);
    static_assert(offsetof(BasicParameterSet, algorithmAgility_) == 28);
  }

  Lumo::NetU8 version_;
  Lumo::NetU8 keyServerPriority_;
  BasicParameterSetPart basicParameterSetPart_;
  SciParameterSet sci_;
  MemberIdentifier memberIdentifier_;
  Lumo::NetU32 messageNumber_;
  Lumo::NetU32 algorithmAgility_;
};

static_assert(isOverlay<BasicParameterSet, 32>);

}  // namespace Macsec
