#pragma once

#include <cstdint>

#include "model/DataPath.h"
#include "model/Keys.h"
#include "model/MkaPeer.h"
#include "model/Sci.h"
#include "runtime/Describe.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// The state of one actor. It outlives the actor's state machine, which takes it up again.
class MkaActorStatus final : public Vesk::DescribedEntity<MkaActorStatus> {
 public:
  static constexpr bool kIsHot = true;
  enum Attribute : uint8_t {
    kCak,
    kMsgId,
    kMsgNum,
    kIck,
    kKek,
    kLivePeer,
    kPotentialPeer,
    kChgdServer,
    kElectedSelf,
    kDistSak,
    kDistCak,
    kKeyNum,
    kNewSak,
    kPrincipal,
    kKeyServer,
    kKeysLPN,
    kSakTransmit,
    kMacsecDesired,
    kLlpnExhaustion,
    kSuccess,
    kDefaultActor
  };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onCak() {}
    virtual void onMsgId() {}
    virtual void onMsgNum() {}
    virtual void onIck() {}
    virtual void onKek() {}
    virtual void onLivePeer(Vesk::String8 const&) {}
    virtual void onLivePeer() {}
    virtual void onLivePeerImmediate() {}
    virtual void onPotentialPeer(Vesk::String8 const&) {}
    virtual void onPotentialPeer() {}
    virtual void onPotentialPeerImmediate() {}
    virtual void onChgdServer() {}
    virtual void onElectedSelf() {}
    virtual void onDistSak() {}
    virtual void onDistCak() {}
    virtual void onKeyNum() {}
    virtual void onNewSak() {}
    virtual void onPrincipal() {}
    virtual void onKeyServer() {}
    virtual void onKeysLPN() {}
    virtual void onSakTransmit() {}
    virtual void onMacsecDesired() {}
    virtual void onLlpnExhaustion() {}
    virtual void onSuccess() {}
    virtual void onDefaultActor() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kCak, &R::onCak);
      v.value(kMsgId, &R::onMsgId);
      v.value(kMsgNum, &R::onMsgNum);
      v.value(kIck, &R::onIck);
      v.value(kKek, &R::onKek);
      v.template collection<Vesk::String8>(kLivePeer, &R::onLivePeer, &R::onLivePeerImmediate);
      v.template collection<Vesk::String8>(kPotentialPeer, &R::onPotentialPeer,
                                           &R::onPotentialPeerImmediate);
      v.value(kChgdServer, &R::onChgdServer);
      v.value(kElectedSelf, &R::onElectedSelf);
      v.value(kDistSak, &R::onDistSak);
      v.value(kDistCak, &R::onDistCak);
      v.value(kKeyNum, &R::onKeyNum);
      v.value(kNewSak, &R::onNewSak);
      v.value(kPrincipal, &R::onPrincipal);
      v.value(kKeyServer, &R::onKeyServer);
      v.value(kKeysLPN, &R::onKeysLPN);
      v.value(kSakTransmit, &R::onSakTransmit);
      v.value(kMacsecDesired, &R::onMacsecDesired);
      v.value(kLlpnExhaustion, &R::onLlpnExhaustion);
      v.value(kSuccess, &R::onSuccess);
      v.value(kDefaultActor, &R::onDefaultActor);
    }
  };
  class Notifiee : public NotifieeConst {};

  using LivePeerMap = Vesk::HashMap<MkaPeer, Vesk::String8>;
  using PotentialPeerMap = Vesk::HashMap<MkaPeer, Vesk::String8>;

  static constexpr uint32_t msgNumDefault = 0;
  static constexpr bool macsecDesiredDefault = true;

  explicit MkaActorStatus(Vesk::String8 const& ckn) : DescribedEntity(ckn), ckn_(ckn) {}
  static Vesk::Ptr<MkaActorStatus> MkaActorStatusIs(Vesk::String8 const& ckn) {
    return Vesk::makeActive<MkaActorStatus>(ckn);
  }

  /// The key of the collection that holds this.
  Vesk::String8 const& fwkKey() const { return ckn_; }

  /// Connectivity association key name.
  Vesk::String8 const& ckn() const { return ckn_; }
  /// The actor's CAK, encoded.
  Vesk::String8 const& cak() const { return cak_; }
  void cakIs(Vesk::String8 const& v) { write<kCak>(cak_, v); }
  /// Own member identifier, 24 hexadecimal digits; empty before the first start.
  Vesk::String8 const& msgId() const { return msgId_; }
  void msgIdIs(Vesk::String8 const& v) { write<kMsgId>(msgId_, v); }
  /// Own message number.
  uint32_t msgNum() const { return msgNum_; }
  void msgNumIs(uint32_t v) { write<kMsgNum>(msgNum_, v); }
  uint32_t msgNumInc(uint32_t n) {
    msgNumIs(msgNum_ + n);
    return msgNum_;
  }
  /// Derived ICV key, encoded.
  Vesk::String8 const& ick() const { return ick_; }
  void ickIs(Vesk::String8 const& v) { write<kIck>(ick_, v); }
  /// Derived key encrypting key, encoded.
  Vesk::String8 const& kek() const { return kek_; }
  void kekIs(Vesk::String8 const& v) { write<kKek>(kek_, v); }

  /// Live peer list, by member identifier.
  LivePeerMap const& livePeer() const { return livePeer_; }
  Vesk::Ptr<MkaPeer> livePeer(Vesk::String8 const& key) const { return livePeer_[key]; }
  Vesk::Ptr<MkaPeer> livePeerIs(Vesk::String8 const& key);
  Vesk::Ptr<MkaPeer> newLivePeer(Vesk::String8 const& key);
  Vesk::Ptr<MkaPeer> livePeerDel(Vesk::String8 const& key);
  Vesk::Ptr<MkaPeer> livePeerDel(LivePeerMap::Iterator const& i) {
    return livePeerDel(i->fwkKey());
  }
  void livePeerDelAll();
  void livePeerNotify(Vesk::String8 const& key);

  /// Potential peer list, by member identifier.
  PotentialPeerMap const& potentialPeer() const { return potentialPeer_; }
  Vesk::Ptr<MkaPeer> potentialPeer(Vesk::String8 const& key) const { return potentialPeer_[key]; }
  Vesk::Ptr<MkaPeer> potentialPeerIs(Vesk::String8 const& key);
  Vesk::Ptr<MkaPeer> newPotentialPeer(Vesk::String8 const& key);
  Vesk::Ptr<MkaPeer> potentialPeerDel(Vesk::String8 const& key);
  Vesk::Ptr<MkaPeer> potentialPeerDel(PotentialPeerMap::Iterator const& i) {
    return potentialPeerDel(i->fwkKey());
  }
  void potentialPeerDelAll();
  void potentialPeerNotify(Vesk::String8 const& key);

  /// Reserved flag for a change of key server.
  bool chgdServer() const { return chgdServer_; }
  void chgdServerIs(bool v) { write<kChgdServer>(chgdServer_, v); }
  /// This actor is the elected key server.
  bool electedSelf() const { return electedSelf_; }
  void electedSelfIs(bool v) { write<kElectedSelf>(electedSelf_, v); }
  /// The SAK last distributed to or by this actor.
  Sak const& distSak() const { return distSak_; }
  void distSakIs(Sak const& v) { write<kDistSak>(distSak_, v); }
  /// The CAK last distributed to this actor.
  Cak const& distCak() const { return distCak_; }
  void distCakIs(Cak const& v) { write<kDistCak>(distCak_, v); }
  /// Last key number generated by this actor as key server.
  uint32_t keyNum() const { return keyNum_; }
  void keyNumIs(uint32_t v) { write<kKeyNum>(keyNum_, v); }
  /// A new SAK is wanted.
  bool newSak() const { return newSak_; }
  void newSakIs(bool v) { write<kNewSak>(newSak_, v); }
  /// This actor is the port's principal actor.
  bool principal() const { return principal_; }
  void principalIs(bool v) { write<kPrincipal>(principal_, v); }
  /// SCI of the elected key server; zero when none is known.
  Sci const& keyServer() const { return keyServer_; }
  void keyServerIs(Sci const& v) { write<kKeyServer>(keyServer_, v); }
  /// Lowest acceptable packet numbers last reported for the old and the latest key.
  KeysLPN const& keysLPN() const { return keysLPN_; }
  void keysLPNIs(KeysLPN const& v) { write<kKeysLPN>(keysLPN_, v); }
  /// Transmit with the latest SAK has begun.
  bool sakTransmit() const { return sakTransmit_; }
  void sakTransmitIs(bool v) { write<kSakTransmit>(sakTransmit_, v); }
  /// Value advertised as MACsec Desired.
  bool macsecDesired() const { return macsecDesired_; }
  void macsecDesiredIs(bool v) { write<kMacsecDesired>(macsecDesired_, v); }
  /// Number of packet number exhaustion events seen.
  uint32_t llpnExhaustion() const { return llpnExhaustion_; }
  void llpnExhaustionIs(uint32_t v) { write<kLlpnExhaustion>(llpnExhaustion_, v); }
  uint32_t llpnExhaustionInc(uint32_t n) {
    llpnExhaustionIs(llpnExhaustion_ + n);
    return llpnExhaustion_;
  }
  /// The actor has a mutually authenticated live peer set.
  bool success() const { return success_; }
  void successIs(bool v) { write<kSuccess>(success_, v); }
  /// The actor runs on the fallback key.
  bool defaultActor() const { return defaultActor_; }
  void defaultActorIs(bool v) { write<kDefaultActor>(defaultActor_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("ckn", &MkaActorStatus::ckn_);
    v.value("cak", &MkaActorStatus::cak_, &MkaActorStatus::cakIs);
    v.value("msgId", &MkaActorStatus::msgId_, &MkaActorStatus::msgIdIs);
    v.value("msgNum", &MkaActorStatus::msgNum_, &MkaActorStatus::msgNumIs);
    v.value("ick", &MkaActorStatus::ick_, &MkaActorStatus::ickIs);
    v.value("kek", &MkaActorStatus::kek_, &MkaActorStatus::kekIs);
    v.members("livePeer", &MkaActorStatus::livePeer_, &MkaActorStatus::livePeerIs);
    v.members("potentialPeer", &MkaActorStatus::potentialPeer_, &MkaActorStatus::potentialPeerIs);
    v.value("chgdServer", &MkaActorStatus::chgdServer_, &MkaActorStatus::chgdServerIs);
    v.value("electedSelf", &MkaActorStatus::electedSelf_, &MkaActorStatus::electedSelfIs);
    v.value("distSak", &MkaActorStatus::distSak_, &MkaActorStatus::distSakIs);
    v.value("distCak", &MkaActorStatus::distCak_, &MkaActorStatus::distCakIs);
    v.value("keyNum", &MkaActorStatus::keyNum_, &MkaActorStatus::keyNumIs);
    v.value("newSak", &MkaActorStatus::newSak_, &MkaActorStatus::newSakIs);
    v.value("principal", &MkaActorStatus::principal_, &MkaActorStatus::principalIs);
    v.value("keyServer", &MkaActorStatus::keyServer_, &MkaActorStatus::keyServerIs);
    v.value("keysLPN", &MkaActorStatus::keysLPN_, &MkaActorStatus::keysLPNIs);
    v.value("sakTransmit", &MkaActorStatus::sakTransmit_, &MkaActorStatus::sakTransmitIs);
    v.value("macsecDesired", &MkaActorStatus::macsecDesired_, &MkaActorStatus::macsecDesiredIs);
    v.value("llpnExhaustion", &MkaActorStatus::llpnExhaustion_, &MkaActorStatus::llpnExhaustionIs);
    v.value("success", &MkaActorStatus::success_, &MkaActorStatus::successIs);
    v.value("defaultActor", &MkaActorStatus::defaultActor_, &MkaActorStatus::defaultActorIs);
  }

 private:
  // What each MKPDU looks at lies together, in front.
  Vesk::String8 msgId_;
  LivePeerMap livePeer_;
  PotentialPeerMap potentialPeer_;
  uint32_t msgNum_ = msgNumDefault;
  bool chgdServer_ = false;
  bool electedSelf_ = false;
  bool newSak_ = false;
  bool principal_ = false;
  bool sakTransmit_ = false;
  bool macsecDesired_ = macsecDesiredDefault;
  bool success_ = false;
  bool defaultActor_ = false;
  Sci keyServer_;
  KeysLPN keysLPN_;
  Sak distSak_;
  uint32_t keyNum_ = 0;
  uint32_t llpnExhaustion_ = 0;
  Vesk::String8 const ckn_;
  Vesk::String8 cak_;
  Vesk::String8 ick_;
  Vesk::String8 kek_;
  Cak distCak_;
};

}  // namespace Macsec
