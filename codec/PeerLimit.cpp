#include "codec/PeerLimit.h"

namespace Codec {

bool PeerLimit::hasRoom() const {
  return !actor_ || (actor_->livePeer().members() < kMostPeers &&
                     actor_->potentialPeer().members() < kMostPeers);
}

bool PeerLimit::admitsSender(Macsec::MemberIdentifier const& sender, bool willBeLive) const {
  if (!actor_) return true;
  size_t const peers =
      willBeLive ? actor_->livePeer().members() : actor_->potentialPeer().members();
  if (peers < kMostPeers) return true;
  Vesk::String8 const member = sender.stringValue();
  return actor_->livePeer(member) || (!willBeLive && actor_->potentialPeer(member));
}

bool PeerLimit::admits(Vesk::String8 const& listed) {
  if (!actor_ || listed == actor_->msgId() || actor_->potentialPeer(listed)) return true;
  if (actor_->potentialPeer().members() + admitted_ >= kMostPeers) return false;
  ++admitted_;
  return true;
}

}  // namespace Codec
