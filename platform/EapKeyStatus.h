#pragma once

#include "platform/EapKey.h"
#include "runtime/Describe.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Dot1x {

/// The keys that the 802.1X module publishes, one for each interface.
class EapKeyStatus final : public Vesk::DescribedEntity<EapKeyStatus> {
 public:
  enum Attribute : uint8_t { kKey };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onKey(Lumo::IntfId const&) {}
    virtual void onKey() {}
    virtual void onKeyImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Lumo::IntfId>(kKey, &R::onKey, &R::onKeyImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using KeyMap = Vesk::ValueMap<Lumo::IntfId, EapKey>;

  explicit EapKeyStatus(Vesk::Name const& name) : DescribedEntity(name) {}
  static Vesk::Ptr<EapKeyStatus> EapKeyStatusIs(Vesk::Name const& name) {
    return Vesk::makeActive<EapKeyStatus>(name);
  }

  /// The keys.
  KeyMap const& key() const { return key_; }
  EapKey const* key(Lumo::IntfId key) const { return key_[key]; }
  void keyIs(Lumo::IntfId key, EapKey const& v) { valueIs<kKey>(key_, key, v); }
  void keyDel(Lumo::IntfId key) { valueDel<kKey>(key_, key); }
  void keyDelAll() { valueDelAll<kKey>(key_); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.values("key", &EapKeyStatus::key_, &EapKeyStatus::keyIs);
  }

 private:
  KeyMap key_;
};

}  // namespace Dot1x
