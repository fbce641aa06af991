#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/ActorKeys.h"
#include "codec/FrameLayout.h"
#include "codec/PeerList.h"
#include "codec/Ports.h"
#include "codec/SetWalk.h"
#include "codec/Unwrap.h"
#include "model/MkaMessageInfo.h"
#include "model/Overlay.h"

namespace Codec {

class PeerLimit;

/// One received frame, first checked from its first octet to its last, then handed up. Nothing is
/// made and nothing outside of this changes before the whole frame has passed.
class FrameReader {
 public:
  explicit FrameReader(Port& port) : port_(port) {}

  /// Length, destination, EtherType, version, EAPOL type; basic parameter set; a CKN that an actor
  /// of the interface holds; algorithm agility; ICV; each further set. The first that is wrong
  /// ends it.
  Refusal check(Octets frame);
  /// Sets whose type isn't known; they were skipped.
  unsigned unknownSets() const { return unknownSets_; }

  // Of a frame that has passed:
  /// Whose frame it is.
  ActorKeys& actor() const { return *actor_; }
  /// The texts of the members of its interface.
  MemberTexts& members() const { return port_.members; }
  Macsec::MemberIdentifier const& sender() const { return layout_.basic().memberIdentifier(); }
  uint32_t messageNumber() const { return layout_.basic().messageNumber().value(); }
  /// Whether it has a distributed SAK set or a distributed CAK set, and where the first begins.
  bool distributesKey() const { return !distSak_.octets.empty() || !distCak_.octets.empty(); }
  size_t distributionAt() const {
    return distSak_.octets.empty() ? distCak_.octet : distSak_.octet;
  }
  /// Calls `see(member, messageNumber)` for each live peer that it lists, and for each potential
  /// one.
  template <class See>
  void eachLive(See see) const {
    eachIn(livePeers_, see);
  }
  template <class See>
  void eachPotential(See see) const {
    eachIn(potentialPeers_, see);
  }

  /// Fills the message with a frame that has passed. Its `count` stays. Live peers of the sender
  /// for whom the limit has no room are left out, and the keys unless they are for this end.
  void fill(Macsec::MkaMessageInfo& message, PeerLimit& limit, bool keysAreForUs);

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
  template <class See>
  static void eachIn(Octets list, See see);

  Port& port_;
  FrameLayout layout_;
  size_t named_ = 0;  // the first actor of this name
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

template <class See>
void FrameReader::eachIn(Octets list, See see) {
  for (; !list.empty(); list = list.subspan(sizeof(PeerList::Set))) {
    auto const& record = *Macsec::overlayOn<PeerList::Set>(list.data());
    see(record.memberIdentifier(), record.messageNumber().value());
  }
}

}  // namespace Codec
