#pragma once

#include <cstdint>

#include "model/MacSecIntfStatus.h"
#include "runtime/Describe.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// One slice of the hardware, written by its driver.
class MacSecStatus final : public Vesk::DescribedEntity<MacSecStatus> {
 public:
  enum Attribute : uint8_t { kStatus };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onStatus(Lumo::IntfId const&) {}
    virtual void onStatus() {}
    virtual void onStatusImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Lumo::IntfId>(kStatus, &R::onStatus, &R::onStatusImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using StatusMap = Vesk::HashMap<MacSecIntfStatus, Lumo::IntfId>;

  explicit MacSecStatus(Vesk::Name const& name) : DescribedEntity(name) {}
  static Vesk::Ptr<MacSecStatus> MacSecStatusIs(Vesk::Name const& name) {
    return Vesk::makeActive<MacSecStatus>(name);
  }

  /// Interfaces of this slice.
  StatusMap const& status() const { return status_; }
  Vesk::Ptr<MacSecIntfStatus> status(Lumo::IntfId key) const { return status_[key]; }
  Vesk::Ptr<MacSecIntfStatus> statusIs(Lumo::IntfId key);
  Vesk::Ptr<MacSecIntfStatus> newStatus(Lumo::IntfId key);
  Vesk::Ptr<MacSecIntfStatus> statusDel(Lumo::IntfId key);
  Vesk::Ptr<MacSecIntfStatus> statusDel(StatusMap::Iterator const& i) {
    return statusDel(i->fwkKey());
  }
  void statusDelAll();
  void statusNotify(Lumo::IntfId key);

  template <class V>
  static constexpr void describe(V&& v) {
    v.members("status", &MacSecStatus::status_, &MacSecStatus::statusIs);
  }

 private:
  StatusMap status_;
};

/// All interfaces of all slices: references, kept by `HwStatusSm`.
class MacSecIntfStatusPtrDir final : public Vesk::DescribedEntity<MacSecIntfStatusPtrDir> {
 public:
  enum Attribute : uint8_t { kStatus };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onStatus(Lumo::IntfId const&) {}
    virtual void onStatus() {}
    virtual void onStatusImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Lumo::IntfId>(kStatus, &R::onStatus, &R::onStatusImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using StatusMap = Vesk::ValueMap<Lumo::IntfId, Vesk::Ptr<MacSecIntfStatus>>;

  explicit MacSecIntfStatusPtrDir(Vesk::Name const& name) : DescribedEntity(name) {}
  static Vesk::Ptr<MacSecIntfStatusPtrDir> MacSecIntfStatusPtrDirIs(Vesk::Name const& name) {
    return Vesk::makeActive<MacSecIntfStatusPtrDir>(name);
  }

  /// The interfaces.
  StatusMap const& status() const { return status_; }
  Vesk::Ptr<MacSecIntfStatus> status(Lumo::IntfId key) const;
  void statusIs(Vesk::Ptr<MacSecIntfStatus> const& ptr);
  Vesk::Ptr<MacSecIntfStatus> statusDel(Lumo::IntfId key);
  Vesk::Ptr<MacSecIntfStatus> statusDel(StatusMap::Iterator const& i) {
    return statusDel(i->fwkKey());
  }
  void statusDelAll();
  void statusNotify(Lumo::IntfId key);

  template <class V>
  static constexpr void describe(V&& v) {
    v.reference("status", &MacSecIntfStatusPtrDir::status_);
  }

 private:
  StatusMap status_;
};

}  // namespace Macsec
