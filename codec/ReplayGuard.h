#pragma once

#include "codec/FrameReader.h"
#include "codec/Ports.h"
#include "codec/Refusal.h"
#include "model/Status.h"

namespace Codec {

/// Keeps recorded MKPDUs out. An ICV says who made a frame, and nothing of when: whoever records
/// frames can send them again without a key. For frames that have passed all checks of
/// their form and their ICV (IEEE 802.1X-2010, 9.4 and 9.5):
///
/// - A member's message numbers rise: an MKPDU whose sender has been heard with the same number or
///   a higher one is refused (`replayErr`).
/// - A key is taken from who has heard this end lately: an MKPDU that distributes a SAK or a CAK is
///   refused (`livenessErr`) unless one of its peer lists has this end's present member identifier
///   with a message number that is at most `Status::mkpduThreshold` behind the last one sent. So no
///   key comes back that was recorded more than a few messages ago, whatever else is forgotten.
/// - A key is for the live peers of who distributes it. One that comes while this end is still a
///   potential peer there was made for others, maybe for this end under its former member
///   identifier and SCI: the frame is taken in without it, and this end becomes a live peer.
class ReplayGuard {
 public:
  /// Where the member identifier of its sender stands in a frame.
  static constexpr size_t kMemberIdentifierAt = sizeof(Macsec::Eapol) + 12;

  explicit ReplayGuard(Vesk::Ptr<Macsec::Status const> status) : status_(std::move(status)) {}

  /// What speaks against a frame that has passed `FrameReader::check`.
  Refusal check(Port const& port, FrameReader const& reader) const;
  /// Whether the keys in such a frame are for this end.
  bool areKeysForUs(FrameReader const& reader) const;
  /// Whether the sender of such a frame shows that it has heard this end lately.
  bool hasHeardUsLately(FrameReader const& reader) const;

 private:
  bool isRecent(Macsec::MkaActorStatus const& actor, uint32_t listed) const;

  Vesk::Ptr<Macsec::Status const> const status_;
};

}  // namespace Codec
