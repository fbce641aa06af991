#include "model/MacSecStatus.h"

namespace Macsec {

Vesk::Ptr<MacSecIntfStatus> MacSecStatus::statusIs(Lumo::IntfId key) {
  return memberIs<kStatus>(status_, key, [&] { return newStatus(key); });
}

Vesk::Ptr<MacSecIntfStatus> MacSecStatus::newStatus(Lumo::IntfId key) {
  return Vesk::make<MacSecIntfStatus>(key);
}

Vesk::Ptr<MacSecIntfStatus> MacSecStatus::statusDel(Lumo::IntfId key) {
  return memberDel<kStatus>(status_, key);
}

void MacSecStatus::statusDelAll() { memberDelAll<kStatus>(status_); }

void MacSecStatus::statusNotify(Lumo::IntfId key) { tellKey<kStatus>(key); }

Vesk::Ptr<MacSecIntfStatus> MacSecIntfStatusPtrDir::status(Lumo::IntfId key) const {
  Vesk::Ptr<MacSecIntfStatus> const* ptr = status_[key];
  return ptr ? *ptr : nullptr;
}

void MacSecIntfStatusPtrDir::statusIs(Vesk::Ptr<MacSecIntfStatus> const& ptr) {
  if (!ptr) {
    Vesk::throwRangeException(
        "null _status parameter to mutator for Macsec::MacSecIntfStatusPtrDir::status not "
        "allowed\"");
  }
  Lumo::IntfId const key = ptr->intfId();
  if (status_.xIs(key, ptr)) memberChanged<kStatus>(&status_, key, "+");
}

Vesk::Ptr<MacSecIntfStatus> MacSecIntfStatusPtrDir::statusDel(Lumo::IntfId key) {
  Vesk::Ptr<MacSecIntfStatus> gone = status(key);
  if (status_.xDel(key)) memberChanged<kStatus>(&status_, key, "");
  return gone;
}

void MacSecIntfStatusPtrDir::statusDelAll() {
  for (auto& entry : status_) statusDel(entry.fwkKey());
}

void MacSecIntfStatusPtrDir::statusNotify(Lumo::IntfId key) { tellKey<kStatus>(key); }

}  // namespace Macsec
