#pragma once

#include <cstdint>
#include <utility>

#include "model/Keys.h"
#include "model/ParameterSets.h"
#include "runtime/Describe.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// The value part of one MKPDU. A parameter set at its default is one that the message lacks.
class MkaInfo final : public Vesk::DescribedEntity<MkaInfo> {
 public:
  enum Attribute : uint8_t {
    kBaseInfo,
    kSakUseInfo,
    kSakDistInfo,
    kCakDistInfo,
    kIcvIndicatorInfo
  };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onBaseInfo() {}
    virtual void onSakUseInfo() {}
    virtual void onSakDistInfo() {}
    virtual void onCakDistInfo() {}
    virtual void onIcvIndicatorInfo() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kBaseInfo, &R::onBaseInfo);
      v.value(kSakUseInfo, &R::onSakUseInfo);
      v.value(kSakDistInfo, &R::onSakDistInfo);
      v.value(kCakDistInfo, &R::onCakDistInfo);
      v.value(kIcvIndicatorInfo, &R::onIcvIndicatorInfo);
    }
  };
  class Notifiee : public NotifieeConst {};

  MkaInfo() : DescribedEntity("mkaInfo") {}
  static Vesk::Ptr<MkaInfo> MkaInfoIs() { return Vesk::makeActive<MkaInfo>(); }

  /// Basic parameter set.
  BasicInfo const& baseInfo() const { return baseInfo_; }
  void baseInfoIs(BasicInfo v) { write<kBaseInfo>(baseInfo_, std::move(v)); }
  /// SAK use parameter set.
  SakUseInfo const& sakUseInfo() const { return sakUseInfo_; }
  void sakUseInfoIs(SakUseInfo v) { write<kSakUseInfo>(sakUseInfo_, std::move(v)); }
  /// Distributed SAK.
  SakDistInfo const& sakDistInfo() const { return sakDistInfo_; }
  void sakDistInfoIs(SakDistInfo const& v) { write<kSakDistInfo>(sakDistInfo_, v); }
  /// Distributed CAK.
  CakDistInfo const& cakDistInfo() const { return cakDistInfo_; }
  void cakDistInfoIs(CakDistInfo const& v) { write<kCakDistInfo>(cakDistInfo_, v); }
  /// ICV indicator.
  IcvIndicatorInfo const& icvIndicatorInfo() const { return icvIndicatorInfo_; }
  void icvIndicatorInfoIs(IcvIndicatorInfo const& v) {
    write<kIcvIndicatorInfo>(icvIndicatorInfo_, v);
  }

  template <class V>
  static constexpr void describe(V&& v) {
    v.value("baseInfo", &MkaInfo::baseInfo_, &MkaInfo::baseInfoIs);
    v.value("sakUseInfo", &MkaInfo::sakUseInfo_, &MkaInfo::sakUseInfoIs);
    v.value("sakDistInfo", &MkaInfo::sakDistInfo_, &MkaInfo::sakDistInfoIs);
    v.value("cakDistInfo", &MkaInfo::cakDistInfo_, &MkaInfo::cakDistInfoIs);
    v.value("icvIndicatorInfo", &MkaInfo::icvIndicatorInfo_, &MkaInfo::icvIndicatorInfoIs);
  }

 private:
  BasicInfo baseInfo_;
  SakUseInfo sakUseInfo_;
  SakDistInfo sakDistInfo_;
  CakDistInfo cakDistInfo_;
  IcvIndicatorInfo icvIndicatorInfo_;
};

/// One MKPDU with its peer lists. The increment of `count` is the event: it comes after all else
/// has been filled in.
class MkaMessageInfo final : public Vesk::DescribedEntity<MkaMessageInfo> {
 public:
  enum Attribute : uint8_t { kIntfId, kCount, kMkaInfo, kLivePeer, kPotentialPeer };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onIntfId() {}
    virtual void onCount() {}
    virtual void onMkaInfo() {}
    virtual void onLivePeer(Vesk::String8 const&) {}
    virtual void onLivePeer() {}
    virtual void onLivePeerImmediate() {}
    virtual void onPotentialPeer(Vesk::String8 const&) {}
    virtual void onPotentialPeer() {}
    virtual void onPotentialPeerImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kIntfId, &R::onIntfId);
      v.value(kCount, &R::onCount);
      v.value(kMkaInfo, &R::onMkaInfo);
      v.template collection<Vesk::String8>(kLivePeer, &R::onLivePeer, &R::onLivePeerImmediate);
      v.template collection<Vesk::String8>(kPotentialPeer, &R::onPotentialPeer,
                                           &R::onPotentialPeerImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using LivePeerMap = Vesk::ValueMap<Vesk::String8, uint32_t>;
  using PotentialPeerMap = Vesk::ValueMap<Vesk::String8, uint32_t>;

  MkaMessageInfo() : DescribedEntity("messageInfo") {}
  static Vesk::Ptr<MkaMessageInfo> MkaMessageInfoIs() { return Vesk::makeActive<MkaMessageInfo>(); }

  /// The interface that the message belongs to.
  Lumo::IntfId intfId() const { return intfId_; }
  void intfIdIs(Lumo::IntfId v) { write<kIntfId>(intfId_, v); }
  /// Messages so far. Reactors under an interface hear of messages for that interface alone.
  uint32_t count() const { return count_; }
  void countIs(uint32_t v) { writeKeyed<kCount>(intfId_, count_, v); }
  uint32_t countInc(uint32_t n) {
    countIs(count_ + n);
    return count_;
  }

  /// The value part; none at first.
  Vesk::Ptr<MkaInfo> const& mkaInfo() const { return mkaInfo_.ptr(); }
  Vesk::Ptr<MkaInfo> mkaInfoIs();
  Vesk::Ptr<MkaInfo> mkaInfoDel();

  /// Live peers: member identifier in hexadecimal to message number.
  LivePeerMap const& livePeer() const { return livePeer_; }
  uint32_t const* livePeer(Vesk::String8 const& key) const { return livePeer_[key]; }
  void livePeerIs(Vesk::String8 const& key, uint32_t v) { valueIs<kLivePeer>(livePeer_, key, v); }
  void livePeerDel(Vesk::String8 const& key) { valueDel<kLivePeer>(livePeer_, key); }
  void livePeerDelAll() { valueDelAll<kLivePeer>(livePeer_); }

  /// Potential peers, in the same way.
  PotentialPeerMap const& potentialPeer() const { return potentialPeer_; }
  uint32_t const* potentialPeer(Vesk::String8 const& key) const { return potentialPeer_[key]; }
  void potentialPeerIs(Vesk::String8 const& key, uint32_t v) {
    valueIs<kPotentialPeer>(potentialPeer_, key, v);
  }
  void potentialPeerDel(Vesk::String8 const& key) { valueDel<kPotentialPeer>(potentialPeer_, key); }
  void potentialPeerDelAll() { valueDelAll<kPotentialPeer>(potentialPeer_); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.value("intfId", &MkaMessageInfo::intfId_, &MkaMessageInfo::intfIdIs);
    v.value("count", &MkaMessageInfo::count_, &MkaMessageInfo::countIs);
    v.child("mkaInfo", &MkaMessageInfo::mkaInfo_);
    v.values("livePeer", &MkaMessageInfo::livePeer_, &MkaMessageInfo::livePeerIs);
    v.values("potentialPeer", &MkaMessageInfo::potentialPeer_, &MkaMessageInfo::potentialPeerIs);
  }

 private:
  Lumo::IntfId intfId_;
  uint32_t count_ = 0;
  Vesk::Child<MkaInfo> mkaInfo_;
  LivePeerMap livePeer_;
  PotentialPeerMap potentialPeer_;
};

}  // namespace Macsec
