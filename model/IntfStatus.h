#pragma once

#include <cstdint>

#include "model/DataPath.h"
#include "model/Keys.h"
#include "platform/Dot1xType.h"
#include "runtime/Describe.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// What the configuration engine derived for one interface: there while a profile binds the
/// interface and has a primary key or 802.1X enabled. Written by `ConfigSm` alone.
class IntfStatus final : public Vesk::DescribedEntity<IntfStatus> {
 public:
  static constexpr bool kIsHot = true;
  enum Attribute : uint8_t {
    kKey,
    kDefaultKey,
    kKeyServerPriority,
    kReKeyPeriod,
    kDot1xType,
    kGroupCakLifetime,
    kProfileName
  };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onKey() {}
    virtual void onDefaultKey() {}
    virtual void onKeyServerPriority() {}
    virtual void onReKeyPeriod() {}
    virtual void onDot1xType() {}
    virtual void onGroupCakLifetime() {}
    virtual void onProfileName() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kKey, &R::onKey);
      v.value(kDefaultKey, &R::onDefaultKey);
      v.value(kKeyServerPriority, &R::onKeyServerPriority);
      v.value(kReKeyPeriod, &R::onReKeyPeriod);
      v.value(kDot1xType, &R::onDot1xType);
      v.value(kGroupCakLifetime, &R::onGroupCakLifetime);
      v.value(kProfileName, &R::onProfileName);
    }
  };
  class Notifiee : public NotifieeConst {};

  static constexpr Dot1x::Dot1xType dot1xTypeDefault = 2;

  IntfStatus(Lumo::IntfId intfId, MacsecParams const& macsecParams)
      : DescribedEntity(intfId.stringValue()), intfId_(intfId), macsecParams_(macsecParams) {}
  static Vesk::Ptr<IntfStatus> IntfStatusIs(Lumo::IntfId intfId, MacsecParams const& macsecParams) {
    return Vesk::makeActive<IntfStatus>(intfId, macsecParams);
  }

  /// The key of the collection that holds this.
  Lumo::IntfId fwkKey() const { return intfId_; }

  /// The interface.
  Lumo::IntfId intfId() const { return intfId_; }
  /// Cipher suite and SCI inclusion.
  MacsecParams const& macsecParams() const { return macsecParams_; }
  /// Primary key.
  Cak const& key() const { return key_; }
  void keyIs(Cak const& v) { write<kKey>(key_, v); }
  /// Fallback key.
  Cak const& defaultKey() const { return defaultKey_; }
  void defaultKeyIs(Cak const& v) { write<kDefaultKey>(defaultKey_, v); }
  /// Key server priority of the actors of this interface.
  uint8_t keyServerPriority() const { return keyServerPriority_; }
  void keyServerPriorityIs(uint8_t v) { write<kKeyServerPriority>(keyServerPriority_, v); }
  /// Session rekey period in seconds; 0 means no timed rekey.
  double reKeyPeriod() const { return reKeyPeriod_; }
  void reKeyPeriodIs(double v) { write<kReKeyPeriod>(reKeyPeriod_, v); }
  /// Cipher suite, of `macsecParams`.
  CipherSuite cipher() const { return macsecParams_.cipher(); }
  /// SCI inclusion, of `macsecParams`.
  bool includeSci() const { return macsecParams_.includeSci(); }
  /// 2 while the primary key is configured, else the type of the 802.1X key it was derived from.
  Dot1x::Dot1xType dot1xType() const { return dot1xType_; }
  void dot1xTypeIs(Dot1x::Dot1xType v) { write<kDot1xType>(dot1xType_, v); }
  /// Lifetime in seconds of a group CAK; 0 means that it is off.
  uint32_t groupCakLifetime() const { return groupCakLifetime_; }
  void groupCakLifetimeIs(uint32_t v) { write<kGroupCakLifetime>(groupCakLifetime_, v); }
  /// Name of the profile from which this entry was last updated.
  Vesk::String8 const& profileName() const { return profileName_; }
  void profileNameIs(Vesk::String8 const& v) { write<kProfileName>(profileName_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("intfId", &IntfStatus::intfId_);
    v.parameter("macsecParams", &IntfStatus::macsecParams_);
    v.value("key", &IntfStatus::key_, &IntfStatus::keyIs);
    v.value("defaultKey", &IntfStatus::defaultKey_, &IntfStatus::defaultKeyIs);
    v.value("keyServerPriority", &IntfStatus::keyServerPriority_, &IntfStatus::keyServerPriorityIs);
    v.value("reKeyPeriod", &IntfStatus::reKeyPeriod_, &IntfStatus::reKeyPeriodIs);
    v.derived("cipher", &IntfStatus::cipher);
    v.derived("includeSci", &IntfStatus::includeSci);
    v.value("dot1xType", &IntfStatus::dot1xType_, &IntfStatus::dot1xTypeIs);
    v.value("groupCakLifetime", &IntfStatus::groupCakLifetime_, &IntfStatus::groupCakLifetimeIs);
    v.value("profileName", &IntfStatus::profileName_, &IntfStatus::profileNameIs);
  }

 private:
  Lumo::IntfId const intfId_;
  MacsecParams const macsecParams_;
  uint8_t keyServerPriority_ = 0;
  Dot1x::Dot1xType dot1xType_ = dot1xTypeDefault;
  Cak key_;
  Cak defaultKey_;
  double reKeyPeriod_ = 0.0;
  uint32_t groupCakLifetime_ = 0;
  Vesk::String8 profileName_;
};

}  // namespace Macsec
