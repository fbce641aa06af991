#pragma once

#include <cstdint>

#include "model/CipherSuite.h"
#include "model/Keys.h"
#include "runtime/Describe.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// A named set of keys and settings that interfaces use.
class Profile final : public Vesk::DescribedEntity<Profile> {
 public:
  enum Attribute : uint8_t {
    kIntf,
    kKey,
    kDefaultKey,
    kKeyServerPriority,
    kSessionReKeyPeriod,
    kCipherSuite,
    kDot1xEnabled,
    kIncludeSci,
    kGroupCak
  };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onIntf(Lumo::IntfId const&) {}
    virtual void onIntf() {}
    virtual void onIntfImmediate() {}
    virtual void onKey() {}
    virtual void onDefaultKey() {}
    virtual void onKeyServerPriority() {}
    virtual void onSessionReKeyPeriod() {}
    virtual void onCipherSuite() {}
    virtual void onDot1xEnabled() {}
    virtual void onIncludeSci() {}
    virtual void onGroupCak() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Lumo::IntfId>(kIntf, &R::onIntf, &R::onIntfImmediate);
      v.value(kKey, &R::onKey);
      v.value(kDefaultKey, &R::onDefaultKey);
      v.value(kKeyServerPriority, &R::onKeyServerPriority);
      v.value(kSessionReKeyPeriod, &R::onSessionReKeyPeriod);
      v.value(kCipherSuite, &R::onCipherSuite);
      v.value(kDot1xEnabled, &R::onDot1xEnabled);
      v.value(kIncludeSci, &R::onIncludeSci);
      v.value(kGroupCak, &R::onGroupCak);
    }
  };
  class Notifiee : public NotifieeConst {};

  using IntfMap = Vesk::ValueMap<Lumo::IntfId, bool>;

  static constexpr uint8_t keyServerPriorityDefault = 16;
  static constexpr uint32_t sessionReKeyPeriodDefault = 0;
  static constexpr CipherSuite cipherSuiteDefault = CipherSuite::gcmAesXpn128;
  static constexpr bool dot1xEnabledDefault = false;
  static constexpr bool includeSciDefault = false;

  explicit Profile(Vesk::Name const& name) : DescribedEntity(name) {}
  static Vesk::Ptr<Profile> ProfileIs(Vesk::Name const& name) {
    return Vesk::makeActive<Profile>(name);
  }

  /// The key of the collection that holds this.
  Vesk::Name const& fwkKey() const { return name(); }

  /// Interfaces bound to this profile; only an entry with value true counts.
  IntfMap const& intf() const { return intf_; }
  bool const* intf(Lumo::IntfId key) const { return intf_[key]; }
  void intfIs(Lumo::IntfId key, bool v) { valueIs<kIntf>(intf_, key, v); }
  void intfDel(Lumo::IntfId key) { valueDel<kIntf>(intf_, key); }
  void intfDelAll() { valueDelAll<kIntf>(intf_); }

  /// Primary pre-shared key.
  Cak const& key() const { return key_; }
  void keyIs(Cak const& v) { write<kKey>(key_, v); }
  /// Fallback pre-shared key.
  Cak const& defaultKey() const { return defaultKey_; }
  void defaultKeyIs(Cak const& v) { write<kDefaultKey>(defaultKey_, v); }
  /// Key server priority.
  uint8_t keyServerPriority() const { return keyServerPriority_; }
  void keyServerPriorityIs(uint8_t v) { write<kKeyServerPriority>(keyServerPriority_, v); }
  /// Session rekey period in seconds; 0 means no timed rekey.
  uint32_t sessionReKeyPeriod() const { return sessionReKeyPeriod_; }
  void sessionReKeyPeriodIs(uint32_t v) { write<kSessionReKeyPeriod>(sessionReKeyPeriod_, v); }
  /// Cipher suite.
  CipherSuite cipherSuite() const { return cipherSuite_; }
  void cipherSuiteIs(CipherSuite v) { write<kCipherSuite>(cipherSuite_, v); }
  /// Take the primary key from 802.1X instead of `key`.
  bool dot1xEnabled() const { return dot1xEnabled_; }
  void dot1xEnabledIs(bool v) { write<kDot1xEnabled>(dot1xEnabled_, v); }
  /// Send the SCI in SecTAGs.
  bool includeSci() const { return includeSci_; }
  void includeSciIs(bool v) { write<kIncludeSci>(includeSci_, v); }
  /// Group CAK settings.
  GroupCak const& groupCak() const { return groupCak_; }
  void groupCakIs(GroupCak const& v) { write<kGroupCak>(groupCak_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.values("intf", &Profile::intf_, &Profile::intfIs);
    v.value("key", &Profile::key_, &Profile::keyIs);
    v.value("defaultKey", &Profile::defaultKey_, &Profile::defaultKeyIs);
    v.value("keyServerPriority", &Profile::keyServerPriority_, &Profile::keyServerPriorityIs);
    v.value("sessionReKeyPeriod", &Profile::sessionReKeyPeriod_, &Profile::sessionReKeyPeriodIs);
    v.value("cipherSuite", &Profile::cipherSuite_, &Profile::cipherSuiteIs);
    v.value("dot1xEnabled", &Profile::dot1xEnabled_, &Profile::dot1xEnabledIs);
    v.value("includeSci", &Profile::includeSci_, &Profile::includeSciIs);
    v.value("groupCak", &Profile::groupCak_, &Profile::groupCakIs);
  }

 private:
  IntfMap intf_;
  Cak key_;
  Cak defaultKey_;
  uint8_t keyServerPriority_ = keyServerPriorityDefault;
  uint32_t sessionReKeyPeriod_ = sessionReKeyPeriodDefault;
  CipherSuite cipherSuite_ = cipherSuiteDefault;
  bool dot1xEnabled_ = dot1xEnabledDefault;
  bool includeSci_ = includeSciDefault;
  GroupCak groupCak_;
};

}  // namespace Macsec
