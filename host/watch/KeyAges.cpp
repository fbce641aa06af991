#include "host/watch/KeyAges.h"

#include "runtime/World.h"

namespace Macsecd {

using Macsec::CpStatus;
using Macsec::Sak;
using Macsec::Status;

struct KeyAges::StatusReactor final : Vesk::Reactor<Status const, KeyAges, StatusReactor> {
  StatusReactor(KeyAges& owner, Vesk::Ptr<Status const> status);
  void onCpStatus(Lumo::IntfId const& intfId) override;
  void onCpStatusImmediate() override {}
  void follow(Lumo::IntfId intfId);
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus;
};

struct KeyAges::CpStatusReactor final : Vesk::Reactor<CpStatus const, KeyAges, CpStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onTxSak() override { owner().look(*notifier(), false); }
};

KeyAges::StatusReactor::StatusReactor(KeyAges& owner, Vesk::Ptr<Status const> status)
    : Reactor(owner, std::move(status)) {
  for (CpStatus& member : notifier()->cpStatus()) follow(member.intfId());
}

void KeyAges::StatusReactor::follow(Lumo::IntfId intfId) {
  Vesk::Ptr<CpStatus const> const member = notifier()->cpStatus(intfId);
  if (!member) return cpStatus.xDel(intfId);
  cpStatus.xIs(intfId, member, [&] { return Vesk::make<CpStatusReactor>(owner(), member); });
}

void KeyAges::StatusReactor::onCpStatus(Lumo::IntfId const& intfId) {
  follow(intfId);
  auto const member = notifier()->cpStatus(intfId);
  if (!member) {
    owner().since_.erase(intfId);
  } else {
    owner().look(*member, false);
  }
}

KeyAges::KeyAges(Vesk::Ptr<Status const> status)
    : status_(Vesk::make<StatusReactor>(*this, std::move(status))) {
  for (CpStatus& member : status_->notifier()->cpStatus()) look(member, true);
  status_->hasNotificationActiveIs(true);
}

KeyAges::~KeyAges() {
  status_->cpStatus.retireAll();
  Vesk::retire(status_);
}

void KeyAges::look(CpStatus const& cpStatus, bool isFirst) {
  Sak const& sak = cpStatus.txSak();
  if (sak == Sak()) {
    since_.erase(cpStatus.intfId());
    return;
  }
  Since& since = since_[cpStatus.intfId()];
  if (isSameSak(since.sak, sak)) return;
  since = {sak, Vesk::now(), isFirst};
}

std::optional<KeyAge> KeyAges::age(Lumo::IntfId intfId) const {
  auto const found = since_.find(intfId);
  if (found == since_.end()) return {};
  return KeyAge{Vesk::now() - found->second.time, found->second.isLeast};
}

}  // namespace Macsecd
