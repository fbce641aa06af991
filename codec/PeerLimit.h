#pragma once

#include "codec/Refusal.h"
#include "model/MemberIdentifier.h"
#include "model/MkaActorStatus.h"

namespace Codec {

/// How many members an actor may get to know: this many live ones and as many potential ones. A
/// link has two members; hundreds are replays of long ago, or made up by somebody who has the key.
/// They cost memory and time for the life time of a peer, and no more than this.
class PeerLimit {
 public:
  static constexpr size_t kMostPeers = 256;

  /// Of the actor whose frame came in, if it stands in a tree; otherwise there is no limit.
  explicit PeerLimit(Macsec::MkaActorStatus const* actor) : actor_(actor) {}

  /// Whether there is room for any sender.
  bool hasRoom() const;
  /// Whether there is room for the sender of a frame among the live peers, or the potential ones.
  bool admitsSender(Macsec::MemberIdentifier const& sender, bool willBeLive) const;
  /// Whether there is room for a member that the sender lists as live, which makes it a potential
  /// peer here. To be asked once for each, since it counts those that it lets in.
  bool admits(Vesk::String8 const& listed);

 private:
  Macsec::MkaActorStatus const* const actor_;
  size_t admitted_ = 0;
};

}  // namespace Codec
