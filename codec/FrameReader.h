#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/ActorKeys.h"
#include "codec/FrameLayout.h"
#include "codec/Ports.h"
#include "codec/SetWalk.h"
#include "codec/Unwrap.h"
#include "model/MkaMessageInfo.h"

namespace Codec {

/// One received frame, first checked from its first octet to its last, then handed up. Nothing is
/// made and nothing outside of this changes before the whole frame has passed.
class FrameReader {
 public:
  explicit FrameReader(Port const& port) : port_(port) {}

  /// Length, destination, EtherType, version, EAPOL type; basic parameter set; a CKN that an actor
  /// of the interface holds; algorithm agility; ICV; each further set. The first that is wrong
  /// ends it.
  Refusal check(Octets frame);
  /// Sets whose type isn't known; they were skipped.
  unsigned unknownSets() const { return unknownSets_; }
  /// Fills the message with a frame that has passed. Its `count` stays.
  void fill(Macsec::MkaMessageInfo& message);

 private:
  Refusal checkActor();
  Refusal checkIcv();
  Refusal checkSets();
  Refusal takeSet(SetView const& set);

  Macsec::BasicInfo basicInfo() const;
  Macsec::SakUseInfo sakUseInfo() const;
  Macsec::SakDistInfo sakDistInfo();
  Macsec::CakDistInfo cakDistInfo() const;
  Vesk::String8 nameText(Octets name) const;
  template <class Put>
  void eachPeer(Octets list, Put put) const;

  Port const& port_;
  FrameLayout layout_;
  ActorKeys* actor_ = nullptr;
  // Heads and bodies of the sets that were found; empty for those that the frame lacks.
  Octets livePeers_;
  Octets potentialPeers_;
  Octets sakUse_;
  SetView distSak_;
  SetView distCak_;
  size_t wrappedCakSize_ = 0;
  bool hasIcvIndicator_ = false;
  unsigned unknownSets_ = 0;
  ClearKey sak_;
  ClearKey cak_;
};

}  // namespace Codec
