#include "host/watch/KeyAges.h"

#include "runtime/NestedReactors.h"
#include "runtime/World.h"

namespace Macsecd {

using Macsec::CpStatus;
using Macsec::Sak;
using Macsec::Status;

struct KeyAges::StatusReactor final : Vesk::Reactor<Status const, KeyAges, StatusReactor> {
  StatusReactor(KeyAges& owner, Vesk::Ptr<Status const> status);
  void onCpStatus(Lumo::IntfId const& intfId) override;
  auto nested() { return std::tie(cpStatus_); }

 private:
  Vesk::NestedReactors<CpStatusReactor, Lumo::IntfId> cpStatus_;
};

struct KeyAges::CpStatusReactor final : Vesk::Reactor<CpStatus const, KeyAges, CpStatusReactor> {
  using Reactor::Reactor;
  Lumo::IntfId fwkKey() const { return notifier()->intfId(); }
  void onTxSak() override { owner().look(*notifier(), false); }
};

KeyAges::StatusReactor::StatusReactor(KeyAges& owner, Vesk::Ptr<Status const> status)
    : Reactor(owner, std::move(status)) {
  cpStatus_.followAll(owner, notifier()->cpStatus());
}

void KeyAges::StatusReactor::onCpStatus(Lumo::IntfId const& intfId) {
  cpStatus_.follow(owner(), notifier()->cpStatus(), intfId);
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

KeyAges::~KeyAges() { Vesk::retire(status_); }

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
