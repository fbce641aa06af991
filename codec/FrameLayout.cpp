#include "codec/FrameLayout.h"

#include "codec/BasicSet.h"
#include "codec/Icv.h"
#include "model/EapolType.h"
#include "model/MacsecConstants.h"
#include "model/Overlay.h"
#include "runtime/Assert.h"

namespace Codec {

namespace {

using Constants = Macsec::MacsecConstants;
using Macsec::BasicParameterSet;
using Macsec::Eapol;

// Octets of the frame in which the fields lie that the checks look at.
constexpr size_t kDst = 0;
constexpr size_t kEthType = 12;
constexpr size_t kVersion = 14;
constexpr size_t kEapolType = 15;
constexpr size_t kBodyLen = 16;
constexpr size_t kBasic = sizeof(Eapol);
constexpr size_t kBasicLength = kBasic + 2;
constexpr size_t kAgility = kBasic + 28;

constexpr Lumo::EthAddr kPaeGroup({0x01, 0x80, 0xC2, 0x00, 0x00, 0x03});

Refusal eapolRefusal(size_t octet, char const* what) { return {SubType::eapolErr, octet, what}; }
Refusal basicRefusal(size_t octet, char const* what) {
  return {SubType::basicParamSetErr, octet, what};
}

Refusal checkBodyLength(size_t frameSize, size_t bodyLength) {
  if (sizeof(Eapol) + bodyLength > frameSize) {
    return eapolRefusal(kBodyLen, "says a body that is longer than the frame");
  }
  if (bodyLength < Constants::mkpduMinSize) {
    return eapolRefusal(kBodyLen, "says a body too short for an MKPDU");
  }
  if (bodyLength % Constants::mkaWordAlignment != 0) {
    return eapolRefusal(kBodyLen, "says a body length that is no multiple of 4");
  }
  return {};
}

}  // namespace

Eapol const& FrameLayout::eapol() const { return *Macsec::overlayOn<Eapol>(frame.data()); }
BasicParameterSet const& FrameLayout::basic() const {
  return *Macsec::overlayOn<BasicParameterSet>(frame.data() + kBasic);
}
Octets FrameLayout::covered() const {
  VESK_ASSERT(frame.size() >= Icv::kSize);
  return frame.first(frame.size() - Icv::kSize);
}
Octets FrameLayout::icv() const { return frame.last(Icv::kSize); }

bool isMkpdu(Octets frame) {
  if (frame.size() < kVersion) return false;
  if (frame[kEthType] != Constants::eapolEthType >> 8) return false;
  if (frame[kEthType + 1] != (Constants::eapolEthType & 0xff)) return false;
  return frame.size() <= kEapolType || frame[kEapolType] == Macsec::EapolType::eapMka;
}

Refusal checkEapol(Octets frame, FrameLayout& out) {
  if (frame.size() < Constants::eapolMinSize) {
    return eapolRefusal(frame.size(), "is missing: the frame ends within its headers");
  }
  auto const& eapol = *Macsec::overlayOn<Eapol>(frame.data());
  if (Refusal refusal = checkBodyLength(frame.size(), eapol.bodyLen())) return refusal;
  if (eapol.dst() != kPaeGroup) {
    return eapolRefusal(kDst, "begins a destination that is not the PAE group address");
  }
  if (eapol.ethType() != Constants::eapolEthType) {
    return eapolRefusal(kEthType, "is another EtherType than EAPOL");
  }
  if (eapol.version() < Constants::eapolVersion) {
    return eapolRefusal(kVersion, "is an EAPOL version that has no MKPDUs");
  }
  if (eapol.eapolType() != Macsec::EapolType::eapMka) {
    return eapolRefusal(kEapolType, "is another EAPOL type than MKA");
  }
  out.frame = frame.first(sizeof(Eapol) + eapol.bodyLen());
  return {};
}

Refusal checkBasicSet(FrameLayout& out) {
  BasicParameterSet const& basic = out.basic();
  if (basic.version() == 0) return basicRefusal(kBasic, "is MKA version 0");
  size_t const length = basic.parameterSetBodyLength();
  if (length <= Constants::basicParameterSetBodyLen) {
    return basicRefusal(kBasicLength, "says a basic parameter set without a name");
  }
  size_t const nameSize = length - Constants::basicParameterSetBodyLen;
  if (nameSize > BasicSet::kMaxName) {
    return basicRefusal(kBasicLength, "says a name of more than 32 octets");
  }
  size_t const nameAt = kBasic + sizeof(BasicParameterSet);
  if (nameAt + aligned(nameSize) + Icv::kSize > out.frame.size()) {
    return basicRefusal(kBasicLength, "says a basic parameter set that leaves no room for the ICV");
  }
  out.name = out.frame.subspan(nameAt, nameSize);
  out.setsAt = nameAt + aligned(nameSize);
  return {};
}

Refusal checkAlgorithm(FrameLayout const& layout) {
  if (layout.basic().algorithmAgility() == Lumo::NetU32(Constants::mkaAlgorithmAgility)) return {};
  return basicRefusal(kAgility, "begins an algorithm agility parameter that isn't ours");
}

}  // namespace Codec
