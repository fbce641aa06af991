#include "codec/SetWalk.h"

#include <algorithm>

#include "codec/DistCak.h"
#include "codec/DistSak.h"
#include "codec/Icv.h"
#include "model/MacsecConstants.h"
#include "model/Overlay.h"

namespace Codec {

namespace {

using Constants = Macsec::MacsecConstants;
using Types = Macsec::ParameterSetTypes;

constexpr size_t kHead = Constants::parameterSetHeaderSize;
/// Where the length lies in a set.
constexpr size_t kLength = 2;

/// What is wrong with the length of a set of this type; null if nothing is.
char const* faultOfLength(uint8_t type, size_t length) {
  switch (type) {
    case Types::livePeerParameterSetType:
    case Types::potentialPeerParameterSetType:
      return length % Constants::sizeOfPeerInfo == 0
                 ? nullptr
                 : "says a peer list whose length is no multiple of 16";
    case Types::sakUseParameterSetType:
      return length == 0 || length == Constants::sakUseParameterSetBodyLen
                 ? nullptr
                 : "says a SAK use set whose length is neither 40 nor 0";
    case Types::distSakParameterSetType:
      return DistSak::isForm(length)
                 ? nullptr
                 : "says a distributed SAK whose length is none of 0, 28, 36 and 52";
    case Types::distCakParameterSetType:
      return DistCak::isForm(length)
                 ? nullptr
                 : "says a distributed CAK whose length is not between 24 and 104";
    default:
      return nullptr;
  }
}

}  // namespace

SubType failureOf(uint8_t parameterSetType) {
  switch (parameterSetType) {
    case Types::livePeerParameterSetType:
      return SubType::livePeerListErr;
    case Types::potentialPeerParameterSetType:
      return SubType::potentialPeerListErr;
    case Types::sakUseParameterSetType:
      return SubType::sakUseSetErr;
    case Types::distSakParameterSetType:
      return SubType::distSakSetErr;
    case Types::distCakParameterSetType:
      return SubType::distCakSetErr;
    case Types::icvIndicatorParameterSetType:
      return SubType::icvIndicatorErr;
    default:
      return SubType::unrecognizedSetErr;
  }
}

bool SetView::isKnown() const { return failureOf(type) != SubType::unrecognizedSetErr; }

bool SetWalk::next() {
  if (rest_.size() < kHead || refusal_) return false;
  refusal_ = take();
  return !refusal_;
}

Refusal SetWalk::take() {
  set_.type = rest_[0];
  set_.octet = octet_;
  // All sets have type and length in the places of the smallest.
  set_.bodyLength = Macsec::overlayOn<Icv::Set>(rest_.data())->parameterSetBodyLength();
  if (Refusal refusal = checkRepeated()) return refusal;
  if (set_.type == Types::icvIndicatorParameterSetType) return takeIcvIndicator();
  size_t const size = kHead + set_.bodyLength;
  if (size > rest_.size()) {
    return {failureOf(set_.type), octet_ + kLength, "says a set that is longer than what remains"};
  }
  char const* fault = faultOfLength(set_.type, set_.bodyLength);
  if (fault && checks_ == Checks::all) return {failureOf(set_.type), octet_ + kLength, fault};
  set_.octets = rest_.first(size);
  rest_ = rest_.subspan(std::min(aligned(size), rest_.size()));
  octet_ += aligned(size);
  return {};
}

// Nothing but the ICV follows it, whatever length it says.
Refusal SetWalk::takeIcvIndicator() {
  if (Refusal refusal = checkIcvIndicator(); refusal && checks_ == Checks::all) return refusal;
  set_.octets = rest_.first(kHead);
  rest_ = {};
  return {};
}

Refusal SetWalk::checkIcvIndicator() const {
  if (!Icv::isForm(set_.bodyLength)) {
    return {SubType::icvIndicatorErr, octet_ + kLength, "says an ICV that is not of 16 octets"};
  }
  if (rest_.size() != kHead) {
    return {SubType::icvIndicatorErr, octet_, "is an ICV indicator that isn't followed by the ICV"};
  }
  return {};
}

Refusal SetWalk::checkRepeated() {
  if (checks_ != Checks::all || !set_.isKnown()) return {};
  uint32_t const bit = 1u << static_cast<unsigned>(failureOf(set_.type));
  if (seen_ & bit) return {failureOf(set_.type), octet_, "begins a set that has come already"};
  seen_ |= bit;
  return {};
}

}  // namespace Codec
