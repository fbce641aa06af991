#include "model/MacSecIntfStatus.h"

namespace Macsec {

Vesk::Ptr<SaStatus> MacSecIntfStatus::txSaStatusIs(AssociationNumber associationNumber,
                                                   Vesk::String8 const& keyId, uint32_t keyNum) {
  if (txSaStatus_ && txSaStatus_->associationNumber() == associationNumber &&
      txSaStatus_->keyId() == keyId && txSaStatus_->keyNum() == keyNum)
    return txSaStatus_.ptr();
  childIs<kTxSaStatus>(txSaStatus_, Vesk::make<SaStatus>(associationNumber, keyId, keyNum));
  return txSaStatus_.ptr();
}

Vesk::Ptr<SaStatus> MacSecIntfStatus::txSaStatusDel() {
  Vesk::Ptr<SaStatus> gone = txSaStatus_.ptr();
  childIs<kTxSaStatus>(txSaStatus_, Vesk::Ptr<SaStatus>());
  return gone;
}

Vesk::Ptr<SaStatus> MacSecIntfStatus::rxSaStatusIs(AssociationNumber key,
                                                   Vesk::String8 const& keyId, uint32_t keyNum) {
  if (auto* member = rxSaStatus_.find(key)) {
    Vesk::requireSameParameter(member->name(), "keyId", keyId, member->keyId());
    Vesk::requireSameParameter(member->name(), "keyNum", keyNum, member->keyNum());
  }
  return memberIs<kRxSaStatus>(rxSaStatus_, key, [&] { return newRxSaStatus(key, keyId, keyNum); });
}

Vesk::Ptr<SaStatus> MacSecIntfStatus::newRxSaStatus(AssociationNumber key,
                                                    Vesk::String8 const& keyId, uint32_t keyNum) {
  return Vesk::make<SaStatus>(key, keyId, keyNum);
}

Vesk::Ptr<SaStatus> MacSecIntfStatus::rxSaStatusDel(AssociationNumber key) {
  return memberDel<kRxSaStatus>(rxSaStatus_, key);
}

void MacSecIntfStatus::rxSaStatusDelAll() { memberDelAll<kRxSaStatus>(rxSaStatus_); }

void MacSecIntfStatus::rxSaStatusNotify(AssociationNumber key) { tellKey<kRxSaStatus>(key); }

}  // namespace Macsec
