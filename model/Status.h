#pragma once

#include <cstdint>

#include "model/CpStatus.h"
#include "model/IntfStatus.h"
#include "model/MkaPortStatus.h"
#include "runtime/Describe.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// Root of the status tree: the working memory of the engine and its only public output.
class Status final : public Vesk::DescribedEntity<Status> {
 public:
  enum Attribute : uint8_t {
    kIntfStatus,
    kCpStatus,
    kPortStatus,
    kFipsStatus,
    kMacsecEnabled,
    kMkpduPeriod,
    kDelayProtection,
    kMkpduThreshold,
    kMkaLifeTime,
    kDefaultKeyActivationPeriod,
    kActorDelPeriod,
    kOldKeyRetirementPeriod,
    kLatestKeyEnablePeriod
  };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onIntfStatus(Lumo::IntfId const&) {}
    virtual void onIntfStatus() {}
    virtual void onIntfStatusImmediate() {}
    virtual void onCpStatus(Lumo::IntfId const&) {}
    virtual void onCpStatus() {}
    virtual void onCpStatusImmediate() {}
    virtual void onPortStatus(Lumo::IntfId const&) {}
    virtual void onPortStatus() {}
    virtual void onPortStatusImmediate() {}
    virtual void onFipsStatus() {}
    virtual void onMacsecEnabled() {}
    virtual void onMkpduPeriod() {}
    virtual void onDelayProtection() {}
    virtual void onMkpduThreshold() {}
    virtual void onMkaLifeTime() {}
    virtual void onDefaultKeyActivationPeriod() {}
    virtual void onActorDelPeriod() {}
    virtual void onOldKeyRetirementPeriod() {}
    virtual void onLatestKeyEnablePeriod() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Lumo::IntfId>(kIntfStatus, &R::onIntfStatus, &R::onIntfStatusImmediate);
      v.template collection<Lumo::IntfId>(kCpStatus, &R::onCpStatus, &R::onCpStatusImmediate);
      v.template collection<Lumo::IntfId>(kPortStatus, &R::onPortStatus, &R::onPortStatusImmediate);
      v.value(kFipsStatus, &R::onFipsStatus);
      v.value(kMacsecEnabled, &R::onMacsecEnabled);
      v.value(kMkpduPeriod, &R::onMkpduPeriod);
      v.value(kDelayProtection, &R::onDelayProtection);
      v.value(kMkpduThreshold, &R::onMkpduThreshold);
      v.value(kMkaLifeTime, &R::onMkaLifeTime);
      v.value(kDefaultKeyActivationPeriod, &R::onDefaultKeyActivationPeriod);
      v.value(kActorDelPeriod, &R::onActorDelPeriod);
      v.value(kOldKeyRetirementPeriod, &R::onOldKeyRetirementPeriod);
      v.value(kLatestKeyEnablePeriod, &R::onLatestKeyEnablePeriod);
    }
  };
  class Notifiee : public NotifieeConst {};

  using IntfStatusMap = Vesk::HashMap<IntfStatus, Lumo::IntfId>;
  using CpStatusMap = Vesk::HashMap<CpStatus, Lumo::IntfId>;
  using PortStatusMap = Vesk::HashMap<MkaPortStatus, Lumo::IntfId>;

  static constexpr bool macsecEnabledDefault = false;
  static constexpr double mkpduPeriodDefault = 2.0;
  /// The period under delay protection.
  static constexpr double mkpduPeriodBounded = 0.5;
  static constexpr bool delayProtectionDefault = false;
  static constexpr uint8_t mkpduThresholdDefault = 2;
  static constexpr uint8_t mkaLifeTimeDefault = 6;
  static constexpr uint8_t defaultKeyActivationPeriodDefault = 30;
  static constexpr uint8_t actorDelPeriodDefault = 8;
  static constexpr uint8_t oldKeyRetirementPeriodDefault = 3;
  static constexpr uint8_t latestKeyEnablePeriodDefault = 180;

  explicit Status(Vesk::Name const& name) : DescribedEntity(name) {}
  static Vesk::Ptr<Status> StatusIs(Vesk::Name const& name) {
    return Vesk::makeActive<Status>(name);
  }

  /// One entry for each interface that has a usable profile.
  IntfStatusMap const& intfStatus() const { return intfStatus_; }
  Vesk::Ptr<IntfStatus> intfStatus(Lumo::IntfId key) const { return intfStatus_[key]; }
  Vesk::Ptr<IntfStatus> intfStatusIs(Lumo::IntfId key, MacsecParams const& macsecParams);
  Vesk::Ptr<IntfStatus> newIntfStatus(Lumo::IntfId key, MacsecParams const& macsecParams);
  Vesk::Ptr<IntfStatus> intfStatusDel(Lumo::IntfId key);
  Vesk::Ptr<IntfStatus> intfStatusDel(IntfStatusMap::Iterator const& i) {
    return intfStatusDel(i->fwkKey());
  }
  void intfStatusDelAll();
  void intfStatusNotify(Lumo::IntfId key);

  /// One entry for each port.
  CpStatusMap const& cpStatus() const { return cpStatus_; }
  Vesk::Ptr<CpStatus> cpStatus(Lumo::IntfId key) const { return cpStatus_[key]; }
  Vesk::Ptr<CpStatus> cpStatusIs(Lumo::IntfId key, MacsecParams const& macsecParams);
  Vesk::Ptr<CpStatus> newCpStatus(Lumo::IntfId key, MacsecParams const& macsecParams);
  Vesk::Ptr<CpStatus> cpStatusDel(Lumo::IntfId key);
  Vesk::Ptr<CpStatus> cpStatusDel(CpStatusMap::Iterator const& i) {
    return cpStatusDel(i->fwkKey());
  }
  void cpStatusDelAll();
  void cpStatusNotify(Lumo::IntfId key);

  /// One entry for each port.
  PortStatusMap const& portStatus() const { return portStatus_; }
  Vesk::Ptr<MkaPortStatus> portStatus(Lumo::IntfId key) const { return portStatus_[key]; }
  Vesk::Ptr<MkaPortStatus> portStatusIs(Lumo::IntfId key);
  Vesk::Ptr<MkaPortStatus> newPortStatus(Lumo::IntfId key);
  Vesk::Ptr<MkaPortStatus> portStatusDel(Lumo::IntfId key);
  Vesk::Ptr<MkaPortStatus> portStatusDel(PortStatusMap::Iterator const& i) {
    return portStatusDel(i->fwkKey());
  }
  void portStatusDelAll();
  void portStatusNotify(Lumo::IntfId key);

  /// FIPS state of this process; the host resets it at its start.
  FipsStatus const& fipsStatus() const { return fipsStatus_; }
  void fipsStatusIs(FipsStatus const& v) { write<kFipsStatus>(fipsStatus_, v); }
  /// Master enable; the host keeps it equal to the negation of `Config::shutdown`.
  bool macsecEnabled() const { return macsecEnabled_; }
  void macsecEnabledIs(bool v) { write<kMacsecEnabled>(macsecEnabled_, v); }
  /// MKPDU transmit period in seconds.
  double mkpduPeriod() const { return mkpduPeriod_; }
  void mkpduPeriodIs(double v) { write<kMkpduPeriod>(mkpduPeriod_, v); }
  /// Delay protection in force.
  bool delayProtection() const { return delayProtection_; }
  void delayProtectionIs(bool v) { write<kDelayProtection>(delayProtection_, v); }
  /// Tolerance, in message numbers, when a peer's listing of this actor is judged.
  uint8_t mkpduThreshold() const { return mkpduThreshold_; }
  void mkpduThresholdIs(uint8_t v) { write<kMkpduThreshold>(mkpduThreshold_, v); }
  /// Seconds after which a silent peer is dropped; also the guard on SAK generation.
  uint8_t mkaLifeTime() const { return mkaLifeTime_; }
  void mkaLifeTimeIs(uint8_t v) { write<kMkaLifeTime>(mkaLifeTime_, v); }
  /// Wait of a fallback key server, in seconds.
  uint8_t defaultKeyActivationPeriod() const { return defaultKeyActivationPeriod_; }
  void defaultKeyActivationPeriodIs(uint8_t v) {
    write<kDefaultKeyActivationPeriod>(defaultKeyActivationPeriod_, v);
  }
  /// Delay of the sweep of displaced actors, in seconds.
  uint8_t actorDelPeriod() const { return actorDelPeriod_; }
  void actorDelPeriodIs(uint8_t v) { write<kActorDelPeriod>(actorDelPeriod_, v); }
  /// Seconds from the latest key's installation for transmit to the end of the old key.
  uint8_t oldKeyRetirementPeriod() const { return oldKeyRetirementPeriod_; }
  void oldKeyRetirementPeriodIs(uint8_t v) {
    write<kOldKeyRetirementPeriod>(oldKeyRetirementPeriod_, v);
  }
  /// Seconds from the latest key's installation for receive to its use for transmit.
  uint8_t latestKeyEnablePeriod() const { return latestKeyEnablePeriod_; }
  void latestKeyEnablePeriodIs(uint8_t v) {
    write<kLatestKeyEnablePeriod>(latestKeyEnablePeriod_, v);
  }

  template <class V>
  static constexpr void describe(V&& v) {
    v.members("intfStatus", &Status::intfStatus_, &Status::intfStatusIs);
    v.members("cpStatus", &Status::cpStatus_, &Status::cpStatusIs);
    v.members("portStatus", &Status::portStatus_, &Status::portStatusIs);
    Vesk::ofProcess(v).value("fipsStatus", &Status::fipsStatus_, &Status::fipsStatusIs);
    v.value("macsecEnabled", &Status::macsecEnabled_, &Status::macsecEnabledIs);
    v.value("mkpduPeriod", &Status::mkpduPeriod_, &Status::mkpduPeriodIs);
    v.value("delayProtection", &Status::delayProtection_, &Status::delayProtectionIs);
    v.value("mkpduThreshold", &Status::mkpduThreshold_, &Status::mkpduThresholdIs);
    v.value("mkaLifeTime", &Status::mkaLifeTime_, &Status::mkaLifeTimeIs);
    v.value("defaultKeyActivationPeriod", &Status::defaultKeyActivationPeriod_,
            &Status::defaultKeyActivationPeriodIs);
    v.value("actorDelPeriod", &Status::actorDelPeriod_, &Status::actorDelPeriodIs);
    v.value("oldKeyRetirementPeriod", &Status::oldKeyRetirementPeriod_,
            &Status::oldKeyRetirementPeriodIs);
    v.value("latestKeyEnablePeriod", &Status::latestKeyEnablePeriod_,
            &Status::latestKeyEnablePeriodIs);
  }

 private:
  IntfStatusMap intfStatus_;
  CpStatusMap cpStatus_;
  PortStatusMap portStatus_;
  FipsStatus fipsStatus_;
  bool macsecEnabled_ = macsecEnabledDefault;
  double mkpduPeriod_ = mkpduPeriodDefault;
  bool delayProtection_ = delayProtectionDefault;
  uint8_t mkpduThreshold_ = mkpduThresholdDefault;
  uint8_t mkaLifeTime_ = mkaLifeTimeDefault;
  uint8_t defaultKeyActivationPeriod_ = defaultKeyActivationPeriodDefault;
  uint8_t actorDelPeriod_ = actorDelPeriodDefault;
  uint8_t oldKeyRetirementPeriod_ = oldKeyRetirementPeriodDefault;
  uint8_t latestKeyEnablePeriod_ = latestKeyEnablePeriodDefault;
};

}  // namespace Macsec
