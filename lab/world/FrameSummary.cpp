#include "lab/world/FrameSummary.h"

#include <fmt/format.h>

#include <algorithm>

#include "codec/Icv.h"
#include "codec/SetWalk.h"
#include "model/MacsecConstants.h"
#include "model/Overlay.h"
#include "platform/Hex.h"

namespace Lab {

namespace {

using Codec::FrameLayout;
using Codec::Octets;
using Constants = Macsec::MacsecConstants;
using Types = Macsec::ParameterSetTypes;

std::string nameOf(uint8_t type) {
  switch (type) {
    case Types::livePeerParameterSetType:
      return "live-peers";
    case Types::potentialPeerParameterSetType:
      return "potential-peers";
    case Types::sakUseParameterSetType:
      return "sak-use";
    case Types::distSakParameterSetType:
      return "dist-sak";
    case Types::distCakParameterSetType:
      return "dist-cak";
    case Types::icvIndicatorParameterSetType:
      return "icv-indicator";
    default:
      return fmt::format("type-{}", type);
  }
}

/// Null if the frame isn't an MKPDU, or ends within its basic set. Nothing else is checked.
std::optional<FrameLayout> layoutOf(Octets frame) {
  constexpr size_t kName = sizeof(Macsec::Eapol) + sizeof(Macsec::BasicParameterSet);
  if (frame.size() < kName + Codec::Icv::kSize || !Codec::isMkpdu(frame)) return {};
  FrameLayout layout;
  layout.frame = frame;
  size_t const size = sizeof(Macsec::Eapol) + layout.eapol().bodyLen();
  layout.frame = frame.first(std::min(size, frame.size()));
  size_t const length = layout.basic().parameterSetBodyLength();
  if (length < Constants::basicParameterSetBodyLen) return {};
  size_t const nameSize = length - Constants::basicParameterSetBodyLen;
  if (kName + nameSize + Codec::Icv::kSize > layout.frame.size()) return {};
  layout.name = layout.frame.subspan(kName, nameSize);
  layout.setsAt = std::min(kName + Codec::aligned(nameSize), layout.covered().size());
  return layout;
}

std::string hex(Octets octets) { return Macsec::hexString(octets).charPtr(); }

}  // namespace

FrameSummary summaryOf(Octets frame) {
  FrameSummary summary;
  std::optional<FrameLayout> const layout = layoutOf(frame);
  if (!layout) return summary;
  summary.memberId = hex(layout->basic().memberIdentifier().bytes());
  summary.messageNumber = layout->basic().messageNumber().value();
  summary.ckn = hex(layout->name);
  Codec::SetWalk walk(*layout, Codec::SetWalk::Checks::bounds);
  while (walk.next()) summary.sets.push_back(nameOf(walk.set().type));
  return summary;
}

}  // namespace Lab
