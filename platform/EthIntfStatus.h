#pragma once

#include <cstdint>

#include "runtime/Describe.h"
#include "runtime/EthAddr.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Interface {

/// State of a link.
using LinkStatus = uint8_t;
constexpr LinkStatus linkUnknown = 0;
constexpr LinkStatus linkDown = 1;
constexpr LinkStatus linkUp = 2;

/// One Ethernet interface as the platform reports it. The host makes it with its link not up and
/// raises the link afterwards.
class EthIntfStatus final : public Vesk::DescribedEntity<EthIntfStatus> {
 public:
  enum Attribute : uint8_t { kLinkStatus };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onLinkStatus() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kLinkStatus, &R::onLinkStatus);
    }
  };
  class Notifiee : public NotifieeConst {};

  EthIntfStatus(Lumo::IntfId intfId, Lumo::EthAddr const& ethAddr, uint16_t portNumber)
      : DescribedEntity(intfId.stringValue()),
        intfId_(intfId),
        ethAddr_(ethAddr),
        portNumber_(portNumber) {}
  static Vesk::Ptr<EthIntfStatus> EthIntfStatusIs(Lumo::IntfId intfId, Lumo::EthAddr const& ethAddr,
                                                  uint16_t portNumber) {
    return Vesk::makeActive<EthIntfStatus>(intfId, ethAddr, portNumber);
  }

  /// The key of the collection that holds this.
  Lumo::IntfId fwkKey() const { return intfId_; }

  /// The interface.
  Lumo::IntfId intfId() const { return intfId_; }
  /// MAC address.
  Lumo::EthAddr const& ethAddr() const { return ethAddr_; }
  /// Port number, the second half of the SCI.
  uint16_t portNumber() const { return portNumber_; }
  /// 2 means that the link is up, any other value that it is not.
  LinkStatus linkStatus() const { return linkStatus_; }
  void linkStatusIs(LinkStatus v) { write<kLinkStatus>(linkStatus_, v); }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("intfId", &EthIntfStatus::intfId_);
    v.parameter("ethAddr", &EthIntfStatus::ethAddr_);
    v.parameter("portNumber", &EthIntfStatus::portNumber_);
    v.value("linkStatus", &EthIntfStatus::linkStatus_, &EthIntfStatus::linkStatusIs);
  }

 private:
  Lumo::IntfId const intfId_;
  Lumo::EthAddr const ethAddr_;
  uint16_t const portNumber_;
  LinkStatus linkStatus_ = linkUnknown;
};

/// All Ethernet interfaces.
class EthIntfStatusDir final : public Vesk::DescribedEntity<EthIntfStatusDir> {
 public:
  enum Attribute : uint8_t { kIntfStatus };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onIntfStatus(Lumo::IntfId const&) {}
    virtual void onIntfStatus() {}
    virtual void onIntfStatusImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Lumo::IntfId>(kIntfStatus, &R::onIntfStatus, &R::onIntfStatusImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using IntfStatusMap = Vesk::HashMap<EthIntfStatus, Lumo::IntfId>;

  explicit EthIntfStatusDir(Vesk::Name const& name) : DescribedEntity(name) {}
  static Vesk::Ptr<EthIntfStatusDir> EthIntfStatusDirIs(Vesk::Name const& name) {
    return Vesk::makeActive<EthIntfStatusDir>(name);
  }

  /// The interfaces.
  IntfStatusMap const& intfStatus() const { return intfStatus_; }
  Vesk::Ptr<EthIntfStatus> intfStatus(Lumo::IntfId key) const { return intfStatus_[key]; }
  Vesk::Ptr<EthIntfStatus> intfStatusIs(Lumo::IntfId key, Lumo::EthAddr const& ethAddr,
                                        uint16_t portNumber);
  Vesk::Ptr<EthIntfStatus> newIntfStatus(Lumo::IntfId key, Lumo::EthAddr const& ethAddr,
                                         uint16_t portNumber);
  Vesk::Ptr<EthIntfStatus> intfStatusDel(Lumo::IntfId key);
  Vesk::Ptr<EthIntfStatus> intfStatusDel(IntfStatusMap::Iterator const& i) {
    return intfStatusDel(i->fwkKey());
  }
  void intfStatusDelAll();
  void intfStatusNotify(Lumo::IntfId key);

  template <class V>
  static constexpr void describe(V&& v) {
    v.members("intfStatus", &EthIntfStatusDir::intfStatus_, &EthIntfStatusDir::intfStatusIs);
  }

 private:
  IntfStatusMap intfStatus_;
};

}  // namespace Interface
