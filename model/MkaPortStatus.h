#pragma once

#include <cstdint>

#include "model/MkaActorStatus.h"
#include "runtime/Describe.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// The state of one port and its actors.
class MkaPortStatus final : public Vesk::DescribedEntity<MkaPortStatus> {
 public:
  static constexpr bool kIsHot = true;
  enum Attribute : uint8_t { kMySci, kAnOfNextKey, kActorStatus };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onMySci() {}
    virtual void onAnOfNextKey() {}
    virtual void onActorStatus(Vesk::String8 const&) {}
    virtual void onActorStatus() {}
    virtual void onActorStatusImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kMySci, &R::onMySci);
      v.value(kAnOfNextKey, &R::onAnOfNextKey);
      v.template collection<Vesk::String8>(kActorStatus, &R::onActorStatus,
                                           &R::onActorStatusImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using ActorStatusMap = Vesk::HashMap<MkaActorStatus, Vesk::String8>;

  explicit MkaPortStatus(Lumo::IntfId intfId)
      : DescribedEntity(intfId.stringValue()), intfId_(intfId) {}
  static Vesk::Ptr<MkaPortStatus> MkaPortStatusIs(Lumo::IntfId intfId) {
    return Vesk::makeActive<MkaPortStatus>(intfId);
  }

  /// The key of the collection that holds this.
  Lumo::IntfId fwkKey() const { return intfId_; }

  /// The interface.
  Lumo::IntfId intfId() const { return intfId_; }
  /// This port's SCI.
  Sci const& mySci() const { return mySci_; }
  void mySciIs(Sci const& v) { write<kMySci>(mySci_, v); }
  /// Association number to use for the next key.
  AssociationNumber anOfNextKey() const { return anOfNextKey_; }
  void anOfNextKeyIs(AssociationNumber v) { write<kAnOfNextKey>(anOfNextKey_, v); }

  /// One entry for each actor, by CKN.
  ActorStatusMap const& actorStatus() const { return actorStatus_; }
  Vesk::Ptr<MkaActorStatus> actorStatus(Vesk::String8 const& key) const {
    return actorStatus_[key];
  }
  Vesk::Ptr<MkaActorStatus> actorStatusIs(Vesk::String8 const& key);
  Vesk::Ptr<MkaActorStatus> newActorStatus(Vesk::String8 const& key);
  Vesk::Ptr<MkaActorStatus> actorStatusDel(Vesk::String8 const& key);
  Vesk::Ptr<MkaActorStatus> actorStatusDel(ActorStatusMap::Iterator const& i) {
    return actorStatusDel(i->fwkKey());
  }
  void actorStatusDelAll();
  void actorStatusNotify(Vesk::String8 const& key);

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("intfId", &MkaPortStatus::intfId_);
    v.value("mySci", &MkaPortStatus::mySci_, &MkaPortStatus::mySciIs);
    v.value("anOfNextKey", &MkaPortStatus::anOfNextKey_, &MkaPortStatus::anOfNextKeyIs);
    v.members("actorStatus", &MkaPortStatus::actorStatus_, &MkaPortStatus::actorStatusIs);
  }

 private:
  Lumo::IntfId const intfId_;
  Sci mySci_;
  AssociationNumber anOfNextKey_;
  ActorStatusMap actorStatus_;
};

}  // namespace Macsec
