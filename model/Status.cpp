#include "model/Status.h"

namespace Macsec {

Vesk::Ptr<IntfStatus> Status::intfStatusIs(Lumo::IntfId key, MacsecParams const& macsecParams) {
  if (auto* member = intfStatus_.find(key)) {
    Vesk::requireSameParameter(member->name(), "macsecParams", macsecParams,
                               member->macsecParams());
  }
  return memberIs<kIntfStatus>(intfStatus_, key, [&] { return newIntfStatus(key, macsecParams); });
}

Vesk::Ptr<IntfStatus> Status::newIntfStatus(Lumo::IntfId key, MacsecParams const& macsecParams) {
  return Vesk::make<IntfStatus>(key, macsecParams);
}

Vesk::Ptr<IntfStatus> Status::intfStatusDel(Lumo::IntfId key) {
  return memberDel<kIntfStatus>(intfStatus_, key);
}

void Status::intfStatusDelAll() { memberDelAll<kIntfStatus>(intfStatus_); }

void Status::intfStatusNotify(Lumo::IntfId key) { tellKey<kIntfStatus>(key); }

Vesk::Ptr<CpStatus> Status::cpStatusIs(Lumo::IntfId key, MacsecParams const& macsecParams) {
  if (auto* member = cpStatus_.find(key)) {
    Vesk::requireSameParameter(member->name(), "macsecParams", macsecParams,
                               member->macsecParams());
  }
  return memberIs<kCpStatus>(cpStatus_, key, [&] { return newCpStatus(key, macsecParams); });
}

Vesk::Ptr<CpStatus> Status::newCpStatus(Lumo::IntfId key, MacsecParams const& macsecParams) {
  return Vesk::make<CpStatus>(key, macsecParams);
}

Vesk::Ptr<CpStatus> Status::cpStatusDel(Lumo::IntfId key) {
  return memberDel<kCpStatus>(cpStatus_, key);
}

void Status::cpStatusDelAll() { memberDelAll<kCpStatus>(cpStatus_); }

void Status::cpStatusNotify(Lumo::IntfId key) { tellKey<kCpStatus>(key); }

Vesk::Ptr<MkaPortStatus> Status::portStatusIs(Lumo::IntfId key) {
  return memberIs<kPortStatus>(portStatus_, key, [&] { return newPortStatus(key); });
}

Vesk::Ptr<MkaPortStatus> Status::newPortStatus(Lumo::IntfId key) {
  return Vesk::make<MkaPortStatus>(key);
}

Vesk::Ptr<MkaPortStatus> Status::portStatusDel(Lumo::IntfId key) {
  return memberDel<kPortStatus>(portStatus_, key);
}

void Status::portStatusDelAll() { memberDelAll<kPortStatus>(portStatus_); }

void Status::portStatusNotify(Lumo::IntfId key) { tellKey<kPortStatus>(key); }

}  // namespace Macsec
