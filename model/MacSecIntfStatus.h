#pragma once

#include <cstdint>

#include "model/AssociationNumber.h"
#include "model/DataPath.h"
#include "runtime/Describe.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// One installed secure association. Its three parameters are its identity: another key in the same
/// place is a new entity.
class SaStatus final : public Vesk::DescribedEntity<SaStatus> {
 public:
  enum Attribute : uint8_t { kLpn };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onLpn() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kLpn, &R::onLpn);
    }
  };
  class Notifiee : public NotifieeConst {};

  SaStatus(AssociationNumber associationNumber, Vesk::String8 const& keyId, uint32_t keyNum)
      : DescribedEntity(Vesk::valueToStrep(associationNumber)),
        associationNumber_(associationNumber),
        keyId_(keyId),
        keyNum_(keyNum) {}
  static Vesk::Ptr<SaStatus> SaStatusIs(AssociationNumber associationNumber,
                                        Vesk::String8 const& keyId, uint32_t keyNum) {
    return Vesk::makeActive<SaStatus>(associationNumber, keyId, keyNum);
  }

  /// The key of the collection that holds this.
  AssociationNumber fwkKey() const { return associationNumber_; }

  /// Association number.
  AssociationNumber associationNumber() const { return associationNumber_; }
  /// `Sak::keyMsgId` of the key.
  Vesk::String8 const& keyId() const { return keyId_; }
  /// `Sak::keyNum` of the key.
  uint32_t keyNum() const { return keyNum_; }
  /// Packet number that the driver reports for the SA.
  uint32_t lpn() const { return lpn_; }
  void lpnIs(uint32_t v) { write<kLpn>(lpn_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("associationNumber", &SaStatus::associationNumber_);
    v.parameter("keyId", &SaStatus::keyId_);
    v.parameter("keyNum", &SaStatus::keyNum_);
    v.value("lpn", &SaStatus::lpn_, &SaStatus::lpnIs);
  }

 private:
  AssociationNumber const associationNumber_;
  Vesk::String8 const keyId_;
  uint32_t const keyNum_;
  uint32_t lpn_ = 0;
};

/// What the data path of one interface has installed.
class MacSecIntfStatus final : public Vesk::DescribedEntity<MacSecIntfStatus> {
 public:
  enum Attribute : uint8_t { kTxSaStatus, kRxSaStatus, kSecHdrSize, kConfigured };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onTxSaStatus() {}
    virtual void onRxSaStatus(AssociationNumber const&) {}
    virtual void onRxSaStatus() {}
    virtual void onRxSaStatusImmediate() {}
    virtual void onSecHdrSize() {}
    virtual void onConfigured() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kTxSaStatus, &R::onTxSaStatus);
      v.template collection<AssociationNumber>(kRxSaStatus, &R::onRxSaStatus,
                                               &R::onRxSaStatusImmediate);
      v.value(kSecHdrSize, &R::onSecHdrSize);
      v.value(kConfigured, &R::onConfigured);
    }
  };
  class Notifiee : public NotifieeConst {};

  using RxSaStatusMap = Vesk::HashMap<SaStatus, AssociationNumber>;

  explicit MacSecIntfStatus(Lumo::IntfId intfId)
      : DescribedEntity(intfId.stringValue()), intfId_(intfId) {}
  static Vesk::Ptr<MacSecIntfStatus> MacSecIntfStatusIs(Lumo::IntfId intfId) {
    return Vesk::makeActive<MacSecIntfStatus>(intfId);
  }

  /// The key of the collection that holds this.
  Lumo::IntfId fwkKey() const { return intfId_; }

  /// The interface.
  Lumo::IntfId intfId() const { return intfId_; }

  /// The SA in use for transmit; replaced whenever its identity changes.
  Vesk::Ptr<SaStatus> const& txSaStatus() const { return txSaStatus_.ptr(); }
  Vesk::Ptr<SaStatus> txSaStatusIs(AssociationNumber associationNumber, Vesk::String8 const& keyId,
                                   uint32_t keyNum);
  Vesk::Ptr<SaStatus> txSaStatusDel();

  /// The SAs installed for receive. Who uses an association number again deletes its entry first.
  RxSaStatusMap const& rxSaStatus() const { return rxSaStatus_; }
  Vesk::Ptr<SaStatus> rxSaStatus(AssociationNumber key) const { return rxSaStatus_[key]; }
  Vesk::Ptr<SaStatus> rxSaStatusIs(AssociationNumber key, Vesk::String8 const& keyId,
                                   uint32_t keyNum);
  Vesk::Ptr<SaStatus> newRxSaStatus(AssociationNumber key, Vesk::String8 const& keyId,
                                    uint32_t keyNum);
  Vesk::Ptr<SaStatus> rxSaStatusDel(AssociationNumber key);
  Vesk::Ptr<SaStatus> rxSaStatusDel(RxSaStatusMap::Iterator const& i) {
    return rxSaStatusDel(i->fwkKey());
  }
  void rxSaStatusDelAll();
  void rxSaStatusNotify(AssociationNumber key);

  /// Size of the security header in bytes; only the driver writes it.
  uint32_t secHdrSize() const { return secHdrSize_; }
  void secHdrSizeIs(uint32_t v) { write<kSecHdrSize>(secHdrSize_, v); }
  /// The driver has configured MACsec on this interface.
  bool configured() const { return configured_; }
  void configuredIs(bool v) { write<kConfigured>(configured_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("intfId", &MacSecIntfStatus::intfId_);
    v.child("txSaStatus", &MacSecIntfStatus::txSaStatus_);
    v.members("rxSaStatus", &MacSecIntfStatus::rxSaStatus_, &MacSecIntfStatus::rxSaStatusIs);
    v.value("secHdrSize", &MacSecIntfStatus::secHdrSize_, &MacSecIntfStatus::secHdrSizeIs);
    v.value("configured", &MacSecIntfStatus::configured_, &MacSecIntfStatus::configuredIs);
  }

 private:
  Lumo::IntfId const intfId_;
  Vesk::Child<SaStatus> txSaStatus_;
  RxSaStatusMap rxSaStatus_;
  uint32_t secHdrSize_ = Constants::secHdrSize;
  bool configured_ = false;
};

}  // namespace Macsec
