#pragma once

#include <cstdint>

#include "model/MkaMessageInfo.h"
#include "platform/EthDevPamCollection.h"
#include "runtime/Describe.h"
#include "runtime/IntfId.h"
#include "runtime/Reactor.h"

namespace Macsec {

/// An interface on which the frame codec exchanges MKPDUs: its presence is all that it says.
class Intf final : public Vesk::DescribedEntity<Intf> {
 public:
  explicit Intf(Lumo::IntfId intfId) : DescribedEntity(intfId.stringValue()), intfId_(intfId) {}
  static Vesk::Ptr<Intf> IntfIs(Lumo::IntfId intfId) { return Vesk::makeActive<Intf>(intfId); }

  /// The key of the collection that holds this.
  Lumo::IntfId fwkKey() const { return intfId_; }

  /// The interface.
  Lumo::IntfId intfId() const { return intfId_; }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("intfId", &Intf::intfId_);
  }

 private:
  Lumo::IntfId const intfId_;
};

/// Packets on one interface in one direction.
class MkaPamCounter final : public Vesk::DescribedEntity<MkaPamCounter> {
 public:
  static constexpr bool kIsHot = true;
  enum Attribute : uint8_t { kSuccess, kFailure };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onSuccess() {}
    virtual void onFailure() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.value(kSuccess, &R::onSuccess);
      v.value(kFailure, &R::onFailure);
    }
  };
  class Notifiee : public NotifieeConst {};

  explicit MkaPamCounter(Lumo::IntfId intfId)
      : DescribedEntity(intfId.stringValue()), intfId_(intfId) {}
  static Vesk::Ptr<MkaPamCounter> MkaPamCounterIs(Lumo::IntfId intfId) {
    return Vesk::makeActive<MkaPamCounter>(intfId);
  }

  /// The key of the collection that holds this.
  Lumo::IntfId fwkKey() const { return intfId_; }

  /// The interface.
  Lumo::IntfId intfId() const { return intfId_; }
  /// Packets handled.
  uint32_t success() const { return success_; }
  void successIs(uint32_t v) { write<kSuccess>(success_, v); }
  uint32_t successInc(uint32_t n) {
    successIs(success_ + n);
    return success_;
  }
  /// Packets that failed.
  uint32_t failure() const { return failure_; }
  void failureIs(uint32_t v) { write<kFailure>(failure_, v); }
  uint32_t failureInc(uint32_t n) {
    failureIs(failure_ + n);
    return failure_;
  }

  template <class V>
  static constexpr void describe(V&& v) {
    v.parameter("intfId", &MkaPamCounter::intfId_);
    v.value("success", &MkaPamCounter::success_, &MkaPamCounter::successIs);
    v.value("failure", &MkaPamCounter::failure_, &MkaPamCounter::failureIs);
  }

 private:
  Lumo::IntfId const intfId_;
  uint32_t success_ = 0;
  uint32_t failure_ = 0;
};

/// Root of the packet exchange: the one message to transmit and the one received, for all actors of
/// all ports, and what the frame codec keeps of its interfaces.
class MkaPamManager final : public Vesk::DescribedEntity<MkaPamManager> {
 public:
  enum Attribute : uint8_t {
    kMkaIntf,
    kRxMessageInfo,
    kTxMessageInfo,
    kTxPamCounter,
    kRxPamCounter
  };

  class NotifieeConst : public Vesk::NotifieeBase {
   public:
    virtual void onMkaIntf(Lumo::IntfId const&) {}
    virtual void onMkaIntf() {}
    virtual void onMkaIntfImmediate() {}
    virtual void onRxMessageInfo() {}
    virtual void onTxMessageInfo() {}
    virtual void onTxPamCounter(Lumo::IntfId const&) {}
    virtual void onTxPamCounter() {}
    virtual void onTxPamCounterImmediate() {}
    virtual void onRxPamCounter(Lumo::IntfId const&) {}
    virtual void onRxPamCounter() {}
    virtual void onRxPamCounterImmediate() {}

    template <class R, class V>
    static constexpr void handlers(V&& v) {
      v.template collection<Lumo::IntfId>(kMkaIntf, &R::onMkaIntf, &R::onMkaIntfImmediate);
      v.value(kRxMessageInfo, &R::onRxMessageInfo);
      v.value(kTxMessageInfo, &R::onTxMessageInfo);
      v.template collection<Lumo::IntfId>(kTxPamCounter, &R::onTxPamCounter,
                                          &R::onTxPamCounterImmediate);
      v.template collection<Lumo::IntfId>(kRxPamCounter, &R::onRxPamCounter,
                                          &R::onRxPamCounterImmediate);
    }
  };
  class Notifiee : public NotifieeConst {};

  using MkaIntfMap = Vesk::HashMap<Intf, Lumo::IntfId>;
  using TxPamCounterMap = Vesk::HashMap<MkaPamCounter, Lumo::IntfId>;
  using RxPamCounterMap = Vesk::HashMap<MkaPamCounter, Lumo::IntfId>;

  explicit MkaPamManager(Vesk::Ptr<Interface::EthDevPamCollection const> const& ethDevPamCollection)
      : DescribedEntity("mkaPamManager"), ethDevPamCollection_(ethDevPamCollection) {
    handleRxMessageInfoInit();
    handleTxMessageInfoInit();
  }
  static Vesk::Ptr<MkaPamManager> MkaPamManagerIs(
      Vesk::Ptr<Interface::EthDevPamCollection const> const& ethDevPamCollection) {
    return Vesk::makeActive<MkaPamManager>(ethDevPamCollection);
  }

  /// Held for the frame codec.
  Vesk::Ptr<Interface::EthDevPamCollection const> const& ethDevPamCollection() const {
    return ethDevPamCollection_;
  }

  /// Interfaces on which MKPDUs are exchanged.
  MkaIntfMap const& mkaIntf() const { return mkaIntf_; }
  Vesk::Ptr<Intf> mkaIntf(Lumo::IntfId key) const { return mkaIntf_[key]; }
  Vesk::Ptr<Intf> mkaIntfIs(Lumo::IntfId key);
  Vesk::Ptr<Intf> newMkaIntf(Lumo::IntfId key);
  Vesk::Ptr<Intf> mkaIntfDel(Lumo::IntfId key);
  Vesk::Ptr<Intf> mkaIntfDel(MkaIntfMap::Iterator const& i) { return mkaIntfDel(i->fwkKey()); }
  void mkaIntfDelAll();
  void mkaIntfNotify(Lumo::IntfId key);

  /// The received message; there from construction to destruction.
  Vesk::Ptr<MkaMessageInfo> const& rxMessageInfo() const { return rxMessageInfo_.ptr(); }
  Vesk::Ptr<MkaMessageInfo> rxMessageInfoIs();
  Vesk::Ptr<MkaMessageInfo> rxMessageInfoDel();

  /// The message to transmit; there from construction to destruction.
  Vesk::Ptr<MkaMessageInfo> const& txMessageInfo() const { return txMessageInfo_.ptr(); }
  Vesk::Ptr<MkaMessageInfo> txMessageInfoIs();
  Vesk::Ptr<MkaMessageInfo> txMessageInfoDel();

  /// Transmit counters.
  TxPamCounterMap const& txPamCounter() const { return txPamCounter_; }
  Vesk::Ptr<MkaPamCounter> txPamCounter(Lumo::IntfId key) const { return txPamCounter_[key]; }
  Vesk::Ptr<MkaPamCounter> txPamCounterIs(Lumo::IntfId key);
  Vesk::Ptr<MkaPamCounter> newTxPamCounter(Lumo::IntfId key);
  Vesk::Ptr<MkaPamCounter> txPamCounterDel(Lumo::IntfId key);
  Vesk::Ptr<MkaPamCounter> txPamCounterDel(TxPamCounterMap::Iterator const& i) {
    return txPamCounterDel(i->fwkKey());
  }
  void txPamCounterDelAll();
  void txPamCounterNotify(Lumo::IntfId key);

  /// Receive counters.
  RxPamCounterMap const& rxPamCounter() const { return rxPamCounter_; }
  Vesk::Ptr<MkaPamCounter> rxPamCounter(Lumo::IntfId key) const { return rxPamCounter_[key]; }
  Vesk::Ptr<MkaPamCounter> rxPamCounterIs(Lumo::IntfId key);
  Vesk::Ptr<MkaPamCounter> newRxPamCounter(Lumo::IntfId key);
  Vesk::Ptr<MkaPamCounter> rxPamCounterDel(Lumo::IntfId key);
  Vesk::Ptr<MkaPamCounter> rxPamCounterDel(RxPamCounterMap::Iterator const& i) {
    return rxPamCounterDel(i->fwkKey());
  }
  void rxPamCounterDelAll();
  void rxPamCounterNotify(Lumo::IntfId key);

  /// The constructor's last steps: each makes its message and asserts that it is there.
  void handleRxMessageInfoInit();
  void handleTxMessageInfoInit();

  template <class V>
  static constexpr void describe(V&& v) {
    v.reference("ethDevPamCollection", &MkaPamManager::ethDevPamCollection_);
    v.members("mkaIntf", &MkaPamManager::mkaIntf_, &MkaPamManager::mkaIntfIs);
    v.child("rxMessageInfo", &MkaPamManager::rxMessageInfo_);
    v.child("txMessageInfo", &MkaPamManager::txMessageInfo_);
    v.members("txPamCounter", &MkaPamManager::txPamCounter_, &MkaPamManager::txPamCounterIs);
    v.members("rxPamCounter", &MkaPamManager::rxPamCounter_, &MkaPamManager::rxPamCounterIs);
  }

 private:
  Vesk::Ptr<Interface::EthDevPamCollection const> const ethDevPamCollection_;
  MkaIntfMap mkaIntf_;
  Vesk::Child<MkaMessageInfo> rxMessageInfo_;
  Vesk::Child<MkaMessageInfo> txMessageInfo_;
  TxPamCounterMap txPamCounter_;
  RxPamCounterMap rxPamCounter_;
};

}  // namespace Macsec
