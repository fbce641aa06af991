#include "model/MkaPortStatus.h"

namespace Macsec {

Vesk::Ptr<MkaActorStatus> MkaPortStatus::actorStatusIs(Vesk::String8 const& key) {
  return memberIs<kActorStatus>(actorStatus_, key, [&] { return newActorStatus(key); });
}

Vesk::Ptr<MkaActorStatus> MkaPortStatus::newActorStatus(Vesk::String8 const& key) {
  return Vesk::make<MkaActorStatus>(key);
}

Vesk::Ptr<MkaActorStatus> MkaPortStatus::actorStatusDel(Vesk::String8 const& key) {
  return memberDel<kActorStatus>(actorStatus_, key);
}

void MkaPortStatus::actorStatusDelAll() { memberDelAll<kActorStatus>(actorStatus_); }

void MkaPortStatus::actorStatusNotify(Vesk::String8 const& key) { tellKey<kActorStatus>(key); }

}  // namespace Macsec
