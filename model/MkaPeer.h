#pragma once

#include <cstdint>

#include "model/ParameterSets.h"
#include "runtime/Describe.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// One peer of an actor, under its member identifier.
class MkaPeer final : public Vesk::DescribedEntity<MkaPeer> {
 public:
  static constexpr bool kIsHot = true;
  enum Attribute : uint8_t { kBaseInfo, kSakUseInfo, kTimeStamp };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onBaseInfo() {}
    virtual void onSakUseInfo() {}
    virtual void onTimeStamp() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kBaseInfo, &R::onBaseInfo);
      v.value(kSakUseInfo, &R::onSakUseInfo);
      v.value(kTimeStamp, &R::onTimeStamp);
    }
  };
  class Notifiee : public NotifieeConst {};

  explicit MkaPeer(Vesk::String8 const& msgId) : DescribedEntity(msgId), msgId_(msgId) {}
  static Vesk::Ptr<MkaPeer> MkaPeerIs(Vesk::String8 const& msgId) {
    return Vesk::makeActive<MkaPeer>(msgId);
  }

  /// The key of the collection that holds this.
  Vesk::String8 const& fwkKey() const { return msgId_; }

  /// Member identifier, 24 hexadecimal digits.
  Vesk::String8 const& msgId() const { return msgId_; }
  /// The peer's basic parameter set as last received.
  BasicInfo const& baseInfo() const { return baseInfo_; }
  void baseInfoIs(BasicInfo const& v) { write<kBaseInfo>(baseInfo_, v); }
  /// The peer's SAK use set as last received.
  SakUseInfo const& sakUseInfo() const { return sakUseInfo_; }
  void sakUseInfoIs(SakUseInfo const& v) { write<kSakUseInfo>(sakUseInfo_, v); }
  /// When the record was last refreshed, in seconds of `Vesk::now`.
  double timeStamp() const { return timeStamp_; }
  void timeStampIs(double v) { write<kTimeStamp>(timeStamp_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("msgId", &MkaPeer::msgId_);
    v.value("baseInfo", &MkaPeer::baseInfo_, &MkaPeer::baseInfoIs);
    v.value("sakUseInfo", &MkaPeer::sakUseInfo_, &MkaPeer::sakUseInfoIs);
    v.value("timeStamp", &MkaPeer::timeStamp_, &MkaPeer::timeStampIs);
  }

 private:
  Vesk::String8 const msgId_;
  BasicInfo baseInfo_;
  SakUseInfo sakUseInfo_;
  double timeStamp_ = 0.0;
};

}  // namespace Macsec
