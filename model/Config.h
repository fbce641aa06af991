#pragma once

#include <cstdint>

#include "model/Profile.h"
#include "runtime/Describe.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// Which profile an interface names.
class IntfConfig final : public Vesk::DescribedEntity<IntfConfig> {
 public:
  enum Attribute : uint8_t { kProfileName };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onProfileName() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kProfileName, &R::onProfileName);
    }
  };
  class Notifiee : public NotifieeConst {};

  IntfConfig(Vesk::Name const& name, Lumo::IntfId intfId)
      : DescribedEntity(name), intfId_(intfId) {}
  static Vesk::Ptr<IntfConfig> IntfConfigIs(Vesk::Name const& name, Lumo::IntfId intfId) {
    return Vesk::makeActive<IntfConfig>(name, intfId);
  }

  /// The key of the collection that holds this.
  Lumo::IntfId fwkKey() const { return intfId_; }

  /// The interface.
  Lumo::IntfId intfId() const { return intfId_; }
  /// Name of the profile; it need not exist.
  Vesk::String8 const& profileName() const { return profileName_; }
  void profileNameIs(Vesk::String8 const& v) { write<kProfileName>(profileName_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("intfId", &IntfConfig::intfId_);
    v.value("profileName", &IntfConfig::profileName_, &IntfConfig::profileNameIs);
  }

 private:
  Lumo::IntfId const intfId_;
  Vesk::String8 profileName_;
};

/// Root of the configuration tree: the only input from the operator.
class Config final : public Vesk::DescribedEntity<Config> {
 public:
  enum Attribute : uint8_t {
    kProfile,
    kIntfConfig,
    kShutdown,
    kFipsRestrictions,
    kClearMkaCounters,
    kDelayProtection
  };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onProfile(Vesk::Name const&) {}
    virtual void onProfile() {}
    virtual void onProfileImmediate() {}
    virtual void onIntfConfig(Lumo::IntfId const&) {}
    virtual void onIntfConfig() {}
    virtual void onIntfConfigImmediate() {}
    virtual void onShutdown() {}
    virtual void onFipsRestrictions() {}
    virtual void onDelayProtection() {}
    virtual void onClearMkaCounters() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Vesk::Name>(kProfile, &R::onProfile, &R::onProfileImmediate);
      v.template collection<Lumo::IntfId>(kIntfConfig, &R::onIntfConfig, &R::onIntfConfigImmediate);
      v.value(kShutdown, &R::onShutdown);
      v.value(kFipsRestrictions, &R::onFipsRestrictions);
      v.value(kClearMkaCounters, &R::onClearMkaCounters);
      v.value(kDelayProtection, &R::onDelayProtection);
    }
  };
  class Notifiee : public NotifieeConst {};

  using ProfileMap = Vesk::HashMap<Profile, Vesk::Name>;
  using IntfConfigMap = Vesk::HashMap<IntfConfig, Lumo::IntfId>;

  static constexpr bool shutdownDefault = false;
  static constexpr bool fipsRestrictionsDefault = false;
  static constexpr bool delayProtectionDefault = false;

  explicit Config(Vesk::Name const& name) : DescribedEntity(name) {}
  static Vesk::Ptr<Config> ConfigIs(Vesk::Name const& name) {
    return Vesk::makeActive<Config>(name);
  }

  /// All profiles.
  ProfileMap const& profile() const { return profile_; }
  Vesk::Ptr<Profile> profile(Vesk::Name const& key) const { return profile_[key]; }
  Vesk::Ptr<Profile> profileIs(Vesk::Name const& key);
  Vesk::Ptr<Profile> newProfile(Vesk::Name const& key);
  Vesk::Ptr<Profile> profileDel(Vesk::Name const& key);
  Vesk::Ptr<Profile> profileDel(ProfileMap::Iterator const& i) { return profileDel(i->fwkKey()); }
  void profileDelAll();
  void profileNotify(Vesk::Name const& key);

  /// Which profile each interface names.
  IntfConfigMap const& intfConfig() const { return intfConfig_; }
  Vesk::Ptr<IntfConfig> intfConfig(Lumo::IntfId key) const { return intfConfig_[key]; }
  Vesk::Ptr<IntfConfig> intfConfigIs(Lumo::IntfId key);
  Vesk::Ptr<IntfConfig> newIntfConfig(Lumo::IntfId key);
  Vesk::Ptr<IntfConfig> intfConfigDel(Lumo::IntfId key);
  Vesk::Ptr<IntfConfig> intfConfigDel(IntfConfigMap::Iterator const& i) {
    return intfConfigDel(i->fwkKey());
  }
  void intfConfigDelAll();
  void intfConfigNotify(Lumo::IntfId key);

  /// Administrative off switch of the whole system.
  bool shutdown() const { return shutdown_; }
  void shutdownIs(bool v) { write<kShutdown>(shutdown_, v); }
  /// Run the crypto library in FIPS mode; a change restarts the process.
  bool fipsRestrictions() const { return fipsRestrictions_; }
  void fipsRestrictionsIs(bool v) { write<kFipsRestrictions>(fipsRestrictions_, v); }
  /// Delay protection: shorter MKPDU period.
  bool delayProtection() const { return delayProtection_; }
  void delayProtectionIs(bool v) { write<kDelayProtection>(delayProtection_, v); }
  /// Each increment asks for a clearing of all counters; the value means nothing.
  uint32_t clearMkaCounters() const { return clearMkaCounters_; }
  void clearMkaCountersIs(uint32_t v) { write<kClearMkaCounters>(clearMkaCounters_, v); }
  uint32_t clearMkaCountersInc(uint32_t n) {
    clearMkaCountersIs(clearMkaCounters_ + n);
    return clearMkaCounters_;
  }

  template <class V>
  static constexpr void describe(V&& v) {
    v.members("profile", &Config::profile_, &Config::profileIs);
    v.members("intfConfig", &Config::intfConfig_, &Config::intfConfigIs);
    v.value("shutdown", &Config::shutdown_, &Config::shutdownIs);
    v.value("fipsRestrictions", &Config::fipsRestrictions_, &Config::fipsRestrictionsIs);
    v.value("clearMkaCounters", &Config::clearMkaCounters_, &Config::clearMkaCountersIs);
    v.value("delayProtection", &Config::delayProtection_, &Config::delayProtectionIs);
  }

 private:
  ProfileMap profile_;
  IntfConfigMap intfConfig_;
  bool shutdown_ = shutdownDefault;
  bool fipsRestrictions_ = fipsRestrictionsDefault;
  uint32_t clearMkaCounters_ = 0;
  bool delayProtection_ = delayProtectionDefault;
};

}  // namespace Macsec
