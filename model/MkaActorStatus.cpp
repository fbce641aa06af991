#include "model/MkaActorStatus.h"

namespace Macsec {

Vesk::Ptr<MkaPeer> MkaActorStatus::livePeerIs(Vesk::String8 const& key) {
  return memberIs<kLivePeer>(livePeer_, key, [&] { return newLivePeer(key); });
}

Vesk::Ptr<MkaPeer> MkaActorStatus::newLivePeer(Vesk::String8 const& key) {
  return Vesk::make<MkaPeer>(key);
}

Vesk::Ptr<MkaPeer> MkaActorStatus::livePeerDel(Vesk::String8 const& key) {
  return memberDel<kLivePeer>(livePeer_, key);
}

void MkaActorStatus::livePeerDelAll() { memberDelAll<kLivePeer>(livePeer_); }

void MkaActorStatus::livePeerNotify(Vesk::String8 const& key) { tellKey<kLivePeer>(key); }

Vesk::Ptr<MkaPeer> MkaActorStatus::potentialPeerIs(Vesk::String8 const& key) {
  return memberIs<kPotentialPeer>(potentialPeer_, key, [&] { return newPotentialPeer(key); });
}

// It is soon live, and another entity then.
Vesk::Ptr<MkaPeer> MkaActorStatus::newPotentialPeer(Vesk::String8 const& key) {
  return Vesk::makeIn<MkaPeer>(Vesk::Home::Part::cold, key);
}

Vesk::Ptr<MkaPeer> MkaActorStatus::potentialPeerDel(Vesk::String8 const& key) {
  return memberDel<kPotentialPeer>(potentialPeer_, key);
}

void MkaActorStatus::potentialPeerDelAll() { memberDelAll<kPotentialPeer>(potentialPeer_); }

void MkaActorStatus::potentialPeerNotify(Vesk::String8 const& key) { tellKey<kPotentialPeer>(key); }

}  // namespace Macsec
