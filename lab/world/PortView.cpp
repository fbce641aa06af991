#include "lab/world/PortView.h"

#include "platform/WardcodeLib.h"

namespace Lab {

using Macsec::MkaActorStatus;
using Macsec::Sak;

Vesk::Ptr<MkaActorStatus> PortView::actor(std::string const& ckn) const {
  auto const portStatus = status_.portStatus(intfId_);
  return portStatus ? portStatus->actorStatus(ckn) : nullptr;
}

Vesk::Ptr<MkaActorStatus> PortView::principal() const {
  auto const portStatus = status_.portStatus(intfId_);
  if (!portStatus) return nullptr;
  for (MkaActorStatus& actor : portStatus->actorStatus()) {
    if (actor.principal()) return &actor;
  }
  return nullptr;
}

Sak PortView::txSak() const {
  auto const cpStatus = status_.cpStatus(intfId_);
  return cpStatus ? cpStatus->txSak() : Sak();
}

char const* stateOf(Macsecd::Host const& host, Lumo::IntfId intfId) {
  return Macsecd::stateOf(host.passage(intfId));
}

namespace {

Vesk::String8 clearKey(StoredSak const& stored) {
  Vesk::WorldScope const scope(stored.world);
  return WardcodeLib::doDecodeKey(stored.sak.key());
}

}  // namespace

bool sameSak(StoredSak const& a, StoredSak const& b) {
  return a.sak != Sak() && b.sak != Sak() && a.sak.keyMsgId() == b.sak.keyMsgId() &&
         a.sak.keyNum() == b.sak.keyNum() && clearKey(a) == clearKey(b);
}

}  // namespace Lab
