#include "lab/PortView.h"

#include <fmt/format.h>

#include "platform/WardcodeLib.h"

namespace Lab {

using Macsec::MkaActorStatus;
using Macsec::Sak;

char const* PortView::state() const {
  auto const cpStatus = status_.cpStatus(intfId_);
  if (!cpStatus) return "absent";
  return cpStatus->controlledPortEnabled() ? "open" : "closed";
}

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

std::string sciText(Macsec::Sci const& sci) {
  return fmt::format("{}/{}", sci.addr().stringValue().view(), sci.portNum());
}

std::string sakText(Sak const& sak) {
  std::string_view const id = sak.keyMsgId().view();
  return fmt::format("{}:{}", id.substr(std::min<size_t>(16, id.size())), sak.keyNum());
}

bool sameSak(Sak const& a, Sak const& b) {
  return a != Sak() && b != Sak() && a.keyMsgId() == b.keyMsgId() && a.keyNum() == b.keyNum() &&
         WardcodeLib::doDecodeKey(a.key()) == WardcodeLib::doDecodeKey(b.key());
}

}  // namespace Lab
